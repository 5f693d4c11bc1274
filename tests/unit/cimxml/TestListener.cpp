#include "TestListener.h"

#include <cimxml/Codec.h>
#include <cimxml/Http.h>
#include <cimxml/OperationCalls.h>

#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/OperationContext.h>

#include <boost/asio.hpp>
#include <boost/asio/ssl.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>

#include <atomic>
#include <mutex>
#include <thread>

namespace cimxml_test
{

using namespace Pegasus;
using namespace cimxml;
namespace asio = boost::asio;
namespace beast = boost::beast;
namespace bhttp = boost::beast::http;
using boost::system::error_code;

namespace
{

// Runs the request against the backend and packs the result or the CIM
// error into a response.
OperationResponse dispatch(CIMOMHandleBackend& b, const OperationRequest& r)
{
    try
    {
        return callOperation(b, OperationContext(), r);
    }
    catch (const CIMException& e)
    {
        return errorResponse(r, Uint32(e.getCode()), e.getMessage());
    }
}

}  // namespace

class TestListener::Impl
{
public:
    Impl(std::shared_ptr<CIMOMHandleBackend> backend, Options options)
        : backend(std::move(backend)), options(std::move(options)), tls(asio::ssl::context::tls_server),
          tcpAcceptor(io)
    {
        if (https())
        {
            tls.use_certificate_chain_file(this->options.certFile);
            tls.use_private_key_file(this->options.keyFile, asio::ssl::context::pem);
        }
        asio::ip::tcp::endpoint where(asio::ip::make_address("127.0.0.1"), 0);
        tcpAcceptor.open(where.protocol());
        tcpAcceptor.bind(where);
        tcpAcceptor.listen();
        acceptTcp();
        thread = std::thread([this] { io.run(); });
    }

    ~Impl()
    {
        io.stop();
        thread.join();
    }

    bool https() const { return !options.certFile.empty(); }

    template <class Stream>
    struct Session : std::enable_shared_from_this<Session<Stream>>
    {
        template <class... Args>
        Session(Impl& owner, Args&&... args) : owner(owner), stream(std::forward<Args>(args)...)
        {}

        void read()
        {
            request = {};
            auto self = this->shared_from_this();
            bhttp::async_read(stream, buffer, request, [self](error_code ec, std::size_t) {
                if (!ec)
                    self->respond();
            });
        }

        void respond()
        {
            if (owner.options.neverAnswer)
            {
                owner.keepAlive.push_back(this->shared_from_this());
                return;
            }
            if (!owner.options.rawAnswer.empty())
            {
                auto self = this->shared_from_this();
                asio::async_write(
                    stream, asio::buffer(owner.options.rawAnswer), [self](error_code, std::size_t) {
                        error_code ignored;
                        beast::get_lowest_layer(self->stream).close(ignored);
                    });
                return;
            }
            response = owner.answer(request);
            auto self = this->shared_from_this();
            bhttp::async_write(stream, response, [self](error_code ec, std::size_t) {
                if (!ec && self->response.keep_alive())
                    self->read();
            });
        }

        Impl& owner;
        Stream stream;
        beast::flat_buffer buffer;
        bhttp::request<bhttp::string_body> request;
        bhttp::response<bhttp::string_body> response;
    };

    void acceptTcp()
    {
        tcpAcceptor.async_accept([this](error_code ec, asio::ip::tcp::socket socket) {
            if (ec)
                return;
            accepted++;
            if (https())
            {
                auto s = std::make_shared<Session<asio::ssl::stream<asio::ip::tcp::socket>>>(
                    *this, std::move(socket), tls);
                s->stream.async_handshake(asio::ssl::stream_base::server, [s](error_code e) {
                    if (!e)
                        s->read();
                });
            }
            else
                std::make_shared<Session<asio::ip::tcp::socket>>(*this, std::move(socket))->read();
            acceptTcp();
        });
    }

    bhttp::response<bhttp::string_body> answer(const bhttp::request<bhttp::string_body>& req)
    {
        bhttp::response<bhttp::string_body> res{bhttp::status::ok, req.version()};
        res.keep_alive(req.keep_alive() && !options.closeAfterEachResponse);
        auto refuse = [&](unsigned status, const std::string& cimError) {
            res.result(status);
            if (!cimError.empty())
                res.set(http::CIM_ERROR, cimError);
            res.body() = "";
            res.prepare_payload();
            return res;
        };
        if (!options.requiredAuthorization.empty() &&
            std::string(req[bhttp::field::authorization]) != options.requiredAuthorization)
        {
            res.set(bhttp::field::www_authenticate, "Basic realm=\"test\"");
            return refuse(401, "");
        }
        if (std::string(req[http::CIM_OPERATION]) != "MethodCall")
            return refuse(400, http::unsupportedOperation().cimError);
        if (!http::isXmlContentType(std::string(req[bhttp::field::content_type])))
            return refuse(406, "");
        OperationResponse response;
        try
        {
            OperationRequest request = decodeRequest(req.body().data(), req.body().size());
            if (!http::headersMatch(
                    request, std::string(req[http::CIM_METHOD]), std::string(req[http::CIM_OBJECT])))
                return refuse(400, http::headerMismatch().cimError);
            {
                std::lock_guard<std::mutex> lock(mutex);
                headers.push_back(
                    std::string(req[http::CIM_METHOD]) + " " + std::string(req[http::CIM_OBJECT]));
            }
            response = dispatch(*backend, request);
        }
        catch (const DecodeError& e)
        {
            http::Refusal r = http::refusalFor(e.failure);
            return refuse(r.status, r.cimError);
        }
        catch (const RequestRefused& e)
        {
            response = e.response();
        }
        StringSink body;
        encodeResponse(response, body);
        res.set(bhttp::field::content_type, http::CONTENT_TYPE_XML);
        res.set(http::CIM_OPERATION, "MethodResponse");
        res.body() = std::move(body.text);
        res.prepare_payload();
        return res;
    }

    std::shared_ptr<CIMOMHandleBackend> backend;
    Options options;
    asio::io_context io;
    asio::ssl::context tls;
    asio::ip::tcp::acceptor tcpAcceptor;
    std::vector<std::shared_ptr<void>> keepAlive;
    std::atomic<unsigned> accepted{0};
    mutable std::mutex mutex;
    std::vector<std::string> headers;
    std::thread thread;
};

TestListener::TestListener(std::shared_ptr<CIMOMHandleBackend> backend, Options options)
    : _impl(new Impl(std::move(backend), std::move(options)))
{}

TestListener::~TestListener() = default;

unsigned TestListener::port() const
{
    return _impl->tcpAcceptor.local_endpoint().port();
}

std::vector<std::string> TestListener::cimHeaders() const
{
    std::lock_guard<std::mutex> lock(_impl->mutex);
    return _impl->headers;
}

unsigned TestListener::connectionsAccepted() const
{
    return _impl->accepted;
}

}  // namespace cimxml_test
