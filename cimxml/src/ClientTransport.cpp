// CIMClient's transports over HTTP, HTTPS and a Unix domain socket: each
// operation becomes one CIM-XML request, sent with Boost.Beast on a kept-open
// connection; every wait is bounded by the client's timeout.
#include <cimxml/ClientTransport.h>
#include <cimxml/Codec.h>
#include <cimxml/Http.h>

#include <Pegasus/Client/CIMClientException.h>
#include <Pegasus/Common/Exception.h>

#include <boost/asio/connect.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/local/stream_protocol.hpp>
#include <boost/asio/ssl.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http.hpp>

#include <openssl/evp.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>

#include <sys/stat.h>

#include <atomic>
#include <chrono>
#include <mutex>

namespace cimxml
{

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace bhttp = boost::beast::http;
using tcp = asio::ip::tcp;
using boost::system::error_code;

namespace
{

std::string utf8(const String& s)
{
    return std::string(static_cast<const char*>(s.getCString()));
}

String fromUtf8(const std::string& s)
{
    return String(s.data(), Uint32(s.size()));
}

std::string base64(const std::string& in)
{
    std::string out(4 * ((in.size() + 2) / 3) + 1, '\0');
    int n = EVP_EncodeBlock(reinterpret_cast<unsigned char*>(&out[0]),
        reinterpret_cast<const unsigned char*>(in.data()), int(in.size()));
    out.resize(std::size_t(n));
    return out;
}

bool isIpAddress(const std::string& host)
{
    error_code ec;
    asio::ip::make_address(host, ec);
    return !ec;
}

// ---- one connection ----

// Where and how to connect; the same for every reconnection.
struct Endpoint
{
    enum Kind
    {
        Tcp,
        Tls,
        Local
    } kind = Tcp;
    std::string host;  // Tcp, Tls
    unsigned port = 0;
    std::string socketPath;   // Local
    std::string description;  // for messages: "host:port" or the socket path

    // Tls
    std::string trustStore, certPath, keyPath;
    SSLCertificateVerifyFunction* verify = nullptr;
};

class Connection
{
public:
    explicit Connection(Endpoint endpoint)
        : _endpoint(std::move(endpoint)), _tlsContext(asio::ssl::context::tls_client)
    {
        if (_endpoint.kind == Endpoint::Tls)
            configureTls();
    }

    ~Connection() { close(); }

    void setTimeout(Uint32 ms) { _timeout = std::chrono::milliseconds(ms == 0 ? 1 : ms); }

    const Endpoint& endpoint() const { return _endpoint; }

    // Opens the connection; CannotConnectException or ConnectionTimeoutException.
    void open()
    {
        close();
        error_code ec;
        if (_endpoint.kind == Endpoint::Local)
        {
            _local.reset(new asio::local::stream_protocol::socket(_io));
            _local->async_connect(
                asio::local::stream_protocol::endpoint(_endpoint.socketPath), [&](error_code e) { ec = e; });
            run();
            if (ec)
                cannotConnect(ec.message());
            return;
        }

        tcp::resolver resolver(_io);
        tcp::resolver::results_type addresses;
        resolver.async_resolve(
            _endpoint.host, std::to_string(_endpoint.port), [&](error_code e, tcp::resolver::results_type r) {
                ec = e;
                addresses = r;
            });
        run();
        if (ec)
            cannotConnect(ec.message());

        if (_endpoint.kind == Endpoint::Tcp)
        {
            _tcp.reset(new tcp::socket(_io));
            asio::async_connect(*_tcp, addresses, [&](error_code e, const tcp::endpoint&) { ec = e; });
            run();
            if (ec)
                cannotConnect(ec.message());
            _tcp->set_option(tcp::no_delay(true), ec);
            return;
        }

        _tls.reset(new asio::ssl::stream<tcp::socket>(_io, _tlsContext));
        asio::async_connect(
            _tls->lowest_layer(), addresses, [&](error_code e, const tcp::endpoint&) { ec = e; });
        run();
        if (ec)
            cannotConnect(ec.message());
        _tls->lowest_layer().set_option(tcp::no_delay(true), ec);
        SSL* ssl = _tls->native_handle();
        if (!isIpAddress(_endpoint.host))
            SSL_set_tlsext_host_name(ssl, _endpoint.host.c_str());
        if (!_endpoint.trustStore.empty())
        {
            // The chain check also checks that the certificate names this server.
            X509_VERIFY_PARAM* param = SSL_get0_param(ssl);
            if (isIpAddress(_endpoint.host))
                X509_VERIFY_PARAM_set1_ip_asc(param, _endpoint.host.c_str());
            else
                X509_VERIFY_PARAM_set1_host(param, _endpoint.host.c_str(), 0);
        }
        _tls->async_handshake(asio::ssl::stream_base::client, [&](error_code e) { ec = e; });
        run();
        if (ec)
        {
            std::string reason = ec.message();
            long verify = SSL_get_verify_result(ssl);
            if (verify != X509_V_OK)
                reason += std::string(" (") + X509_verify_cert_error_string(verify) + ")";
            cannotConnect("TLS handshake failed: " + reason);
        }
    }

    bool isOpen() const { return _tcp || _tls || _local; }

    void close()
    {
        error_code ignored;
        if (_tcp)
            _tcp->close(ignored);
        if (_tls)
            _tls->lowest_layer().close(ignored);
        if (_local)
            _local->close(ignored);
        _tcp.reset();
        _tls.reset();
        _local.reset();
        _buffer.clear();
    }

    // Sends request and reads the answer into parser. Returns false when
    // the connection turned out to be closed by the server before anything
    // was read (the caller may reconnect and retry); throws otherwise.
    bool exchange(
        bhttp::request<bhttp::string_body>& request, bhttp::response_parser<bhttp::string_body>& parser)
    {
        error_code ec;
        withStream([&](auto& stream) {
            bhttp::async_write(stream, request, [&](error_code e, std::size_t) { ec = e; });
        });
        run();
        if (ec)
            return false;
        withStream([&](auto& stream) {
            bhttp::async_read(stream, _buffer, parser, [&](error_code e, std::size_t) { ec = e; });
        });
        run();
        if (!ec)
            return true;
        if (!parser.got_some() &&
            (ec == bhttp::error::end_of_stream || ec == asio::error::eof ||
                ec == asio::error::connection_reset || ec == asio::ssl::error::stream_truncated))
            return false;
        close();
        if (ec.category() == bhttp::make_error_code(bhttp::error::bad_version).category())
            throw CIMClientMalformedHTTPException(
                fromUtf8("malformed HTTP response from " + _endpoint.description + ": " + ec.message()));
        throw CIMClientResponseException(fromUtf8("the connection to " + _endpoint.description +
            " failed while reading the response: " + ec.message()));
    }

private:
    template <class F>
    void withStream(F&& f)
    {
        if (_tls)
            f(*_tls);
        else if (_tcp)
            f(*_tcp);
        else
            f(*_local);
    }

    // Runs the pending operation to its end or until the timeout; on
    // timeout the connection is closed and ConnectionTimeoutException thrown.
    void run()
    {
        _io.restart();
        _io.run_for(_timeout);
        if (_io.stopped())
            return;
        close();
        _io.restart();
        _io.run();  // let the aborted operations finish
        throw ConnectionTimeoutException();
    }

    [[noreturn]] void cannotConnect(const std::string& reason)
    {
        close();
        throw CannotConnectException(fromUtf8(_endpoint.description + ": " + reason));
    }

    void configureTls()
    {
        error_code ec;
        _tlsContext.set_options(asio::ssl::context::default_workarounds | asio::ssl::context::no_sslv2 |
            asio::ssl::context::no_sslv3 | asio::ssl::context::no_tlsv1 | asio::ssl::context::no_tlsv1_1);
        if (!_endpoint.certPath.empty())
        {
            _tlsContext.use_certificate_chain_file(_endpoint.certPath, ec);
            if (!ec)
                _tlsContext.use_private_key_file(
                    _endpoint.keyPath.empty() ? _endpoint.certPath : _endpoint.keyPath,
                    asio::ssl::context::pem, ec);
            if (ec)
                throw CannotConnectException(fromUtf8(
                    _endpoint.description + ": cannot load the client certificate: " + ec.message()));
        }
        if (!_endpoint.trustStore.empty())
        {
            struct stat st;
            if (::stat(_endpoint.trustStore.c_str(), &st) == 0 && S_ISDIR(st.st_mode))
                _tlsContext.add_verify_path(_endpoint.trustStore, ec);
            else
                _tlsContext.load_verify_file(_endpoint.trustStore, ec);
            if (ec)
                throw CannotConnectException(fromUtf8(_endpoint.description +
                    ": cannot load the trust store " + _endpoint.trustStore + ": " + ec.message()));
        }
        if (_endpoint.verify)
        {
            SSLCertificateVerifyFunction* verify = _endpoint.verify;
            _tlsContext.set_verify_mode(asio::ssl::verify_peer);
            _tlsContext.set_verify_callback(
                [verify](bool preverified, asio::ssl::verify_context& vc) -> bool {
                    X509_STORE_CTX* store = vc.native_handle();
                    X509* cert = X509_STORE_CTX_get_current_cert(store);
                    char subject[512] = "", issuer[512] = "";
                    if (cert)
                    {
                        X509_NAME_oneline(X509_get_subject_name(cert), subject, sizeof subject);
                        X509_NAME_oneline(X509_get_issuer_name(cert), issuer, sizeof issuer);
                    }
                    int error = preverified ? X509_V_OK : X509_STORE_CTX_get_error(store);
                    SSLCertificateInfo info(String(subject), String(issuer),
                        Uint32(X509_STORE_CTX_get_error_depth(store)), Uint32(error),
                        String(X509_verify_cert_error_string(error)));
                    return verify(info);
                });
        }
        else if (!_endpoint.trustStore.empty())
            _tlsContext.set_verify_mode(asio::ssl::verify_peer | asio::ssl::verify_fail_if_no_peer_cert);
        else
            _tlsContext.set_verify_mode(asio::ssl::verify_none);  // the caller's explicit choice
    }

    Endpoint _endpoint;
    asio::io_context _io;
    asio::ssl::context _tlsContext;
    std::unique_ptr<tcp::socket> _tcp;
    std::unique_ptr<asio::ssl::stream<tcp::socket>> _tls;
    std::unique_ptr<asio::local::stream_protocol::socket> _local;
    beast::flat_buffer _buffer;
    std::chrono::milliseconds _timeout{20000};
};

// ---- request building ----

CIMValue nameValue(const CIMName& name)
{
    return name.isNull() ? CIMValue(CIMTYPE_STRING, false) : CIMValue(name.getString());
}

CIMValue textValue(const String& text)
{
    return text.size() == 0 ? CIMValue(CIMTYPE_STRING, false) : CIMValue(text);
}

CIMValue listValue(const CIMPropertyList& list)
{
    if (list.isNull())
        return CIMValue(CIMTYPE_STRING, true);
    Array<String> names;
    for (Uint32 i = 0; i < list.size(); i++)
        names.append(list[i].getString());
    return CIMValue(names);
}

struct Call
{
    OperationRequest request;

    Call(Intrinsic op, const CIMNamespaceName& nameSpace)
    {
        request.intrinsic = true;
        request.operation = op;
        request.nameSpace = nameSpace;
    }

    Call& with(const char* name, const CIMValue& value)
    {
        request.parameters.append(CIMParamValue(name, value));
        return *this;
    }
};

template <class T>
T scalar(const CIMValue& v)
{
    T x;
    if (!v.isNull())
        v.get(x);
    return x;
}

template <class T>
Array<T> array(const CIMValue& v)
{
    Array<T> x;
    if (!v.isNull())
        v.get(x);
    return x;
}

// ---- the transport ----

class XmlClientTransport : public CIMClientTransport
{
public:
    XmlClientTransport(Endpoint endpoint, const std::string& hostHeader, const std::string& authorization,
        Uint32 timeoutMilliseconds)
        : _connection(std::move(endpoint)), _hostHeader(hostHeader), _authorization(authorization)
    {
        _connection.setTimeout(timeoutMilliseconds);
        _connection.open();
    }

    void setTimeout(Uint32 timeoutMilliseconds) override { _connection.setTimeout(timeoutMilliseconds); }

    CIMClass getClass(const CIMNamespaceName& ns, const CIMName& className, Boolean localOnly,
        Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList) override
    {
        Call c(Intrinsic::GetClass, ns);
        c.with("ClassName", nameValue(className))
            .with("LocalOnly", CIMValue(localOnly))
            .with("IncludeQualifiers", CIMValue(includeQualifiers))
            .with("IncludeClassOrigin", CIMValue(includeClassOrigin))
            .with("PropertyList", listValue(propertyList));
        return CIMClass(scalar<CIMObject>(call(c).returnValue));
    }

    Array<CIMClass> enumerateClasses(const CIMNamespaceName& ns, const CIMName& className,
        Boolean deepInheritance, Boolean localOnly, Boolean includeQualifiers,
        Boolean includeClassOrigin) override
    {
        Call c(Intrinsic::EnumerateClasses, ns);
        c.with("ClassName", nameValue(className))
            .with("DeepInheritance", CIMValue(deepInheritance))
            .with("LocalOnly", CIMValue(localOnly))
            .with("IncludeQualifiers", CIMValue(includeQualifiers))
            .with("IncludeClassOrigin", CIMValue(includeClassOrigin));
        Array<CIMObject> objects = array<CIMObject>(call(c).returnValue);
        Array<CIMClass> classes;
        for (Uint32 i = 0; i < objects.size(); i++)
            classes.append(CIMClass(objects[i]));
        return classes;
    }

    Array<CIMName> enumerateClassNames(
        const CIMNamespaceName& ns, const CIMName& className, Boolean deepInheritance) override
    {
        Call c(Intrinsic::EnumerateClassNames, ns);
        c.with("ClassName", nameValue(className)).with("DeepInheritance", CIMValue(deepInheritance));
        Array<String> names = array<String>(call(c).returnValue);
        Array<CIMName> result;
        for (Uint32 i = 0; i < names.size(); i++)
            result.append(CIMName(names[i]));
        return result;
    }

    void createClass(const CIMNamespaceName& ns, const CIMClass& newClass) override
    {
        Call c(Intrinsic::CreateClass, ns);
        call(c.with("NewClass", CIMValue(CIMObject(newClass))));
    }

    void modifyClass(const CIMNamespaceName& ns, const CIMClass& modifiedClass) override
    {
        Call c(Intrinsic::ModifyClass, ns);
        call(c.with("ModifiedClass", CIMValue(CIMObject(modifiedClass))));
    }

    void deleteClass(const CIMNamespaceName& ns, const CIMName& className) override
    {
        Call c(Intrinsic::DeleteClass, ns);
        call(c.with("ClassName", nameValue(className)));
    }

    CIMInstance getInstance(const CIMNamespaceName& ns, const CIMObjectPath& instanceName, Boolean localOnly,
        Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList) override
    {
        Call c(Intrinsic::GetInstance, ns);
        c.with("InstanceName", CIMValue(instanceName))
            .with("LocalOnly", CIMValue(localOnly))
            .with("IncludeQualifiers", CIMValue(includeQualifiers))
            .with("IncludeClassOrigin", CIMValue(includeClassOrigin))
            .with("PropertyList", listValue(propertyList));
        return scalar<CIMInstance>(call(c).returnValue);
    }

    Array<CIMInstance> enumerateInstances(const CIMNamespaceName& ns, const CIMName& className,
        Boolean deepInheritance, Boolean localOnly, Boolean includeQualifiers, Boolean includeClassOrigin,
        const CIMPropertyList& propertyList) override
    {
        Call c(Intrinsic::EnumerateInstances, ns);
        c.with("ClassName", nameValue(className))
            .with("LocalOnly", CIMValue(localOnly))
            .with("DeepInheritance", CIMValue(deepInheritance))
            .with("IncludeQualifiers", CIMValue(includeQualifiers))
            .with("IncludeClassOrigin", CIMValue(includeClassOrigin))
            .with("PropertyList", listValue(propertyList));
        return array<CIMInstance>(call(c).returnValue);
    }

    Array<CIMObjectPath> enumerateInstanceNames(const CIMNamespaceName& ns, const CIMName& className) override
    {
        Call c(Intrinsic::EnumerateInstanceNames, ns);
        return array<CIMObjectPath>(call(c.with("ClassName", nameValue(className))).returnValue);
    }

    CIMObjectPath createInstance(const CIMNamespaceName& ns, const CIMInstance& newInstance) override
    {
        Call c(Intrinsic::CreateInstance, ns);
        return scalar<CIMObjectPath>(call(c.with("NewInstance", CIMValue(newInstance))).returnValue);
    }

    void modifyInstance(const CIMNamespaceName& ns, const CIMInstance& modifiedInstance,
        Boolean includeQualifiers, const CIMPropertyList& propertyList) override
    {
        Call c(Intrinsic::ModifyInstance, ns);
        c.with("ModifiedInstance", CIMValue(modifiedInstance))
            .with("IncludeQualifiers", CIMValue(includeQualifiers))
            .with("PropertyList", listValue(propertyList));
        call(c);
    }

    void deleteInstance(const CIMNamespaceName& ns, const CIMObjectPath& instanceName) override
    {
        Call c(Intrinsic::DeleteInstance, ns);
        call(c.with("InstanceName", CIMValue(instanceName)));
    }

    Array<CIMObject> execQuery(
        const CIMNamespaceName& ns, const String& queryLanguage, const String& query) override
    {
        Call c(Intrinsic::ExecQuery, ns);
        c.with("QueryLanguage", CIMValue(queryLanguage)).with("Query", CIMValue(query));
        return array<CIMObject>(call(c).returnValue);
    }

    Array<CIMObject> associators(const CIMNamespaceName& ns, const CIMObjectPath& objectName,
        const CIMName& assocClass, const CIMName& resultClass, const String& role, const String& resultRole,
        Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList) override
    {
        Call c(Intrinsic::Associators, ns);
        c.with("ObjectName", CIMValue(objectName))
            .with("AssocClass", nameValue(assocClass))
            .with("ResultClass", nameValue(resultClass))
            .with("Role", textValue(role))
            .with("ResultRole", textValue(resultRole))
            .with("IncludeQualifiers", CIMValue(includeQualifiers))
            .with("IncludeClassOrigin", CIMValue(includeClassOrigin))
            .with("PropertyList", listValue(propertyList));
        return array<CIMObject>(call(c).returnValue);
    }

    Array<CIMObjectPath> associatorNames(const CIMNamespaceName& ns, const CIMObjectPath& objectName,
        const CIMName& assocClass, const CIMName& resultClass, const String& role,
        const String& resultRole) override
    {
        Call c(Intrinsic::AssociatorNames, ns);
        c.with("ObjectName", CIMValue(objectName))
            .with("AssocClass", nameValue(assocClass))
            .with("ResultClass", nameValue(resultClass))
            .with("Role", textValue(role))
            .with("ResultRole", textValue(resultRole));
        return array<CIMObjectPath>(call(c).returnValue);
    }

    Array<CIMObject> references(const CIMNamespaceName& ns, const CIMObjectPath& objectName,
        const CIMName& resultClass, const String& role, Boolean includeQualifiers, Boolean includeClassOrigin,
        const CIMPropertyList& propertyList) override
    {
        Call c(Intrinsic::References, ns);
        c.with("ObjectName", CIMValue(objectName))
            .with("ResultClass", nameValue(resultClass))
            .with("Role", textValue(role))
            .with("IncludeQualifiers", CIMValue(includeQualifiers))
            .with("IncludeClassOrigin", CIMValue(includeClassOrigin))
            .with("PropertyList", listValue(propertyList));
        return array<CIMObject>(call(c).returnValue);
    }

    Array<CIMObjectPath> referenceNames(const CIMNamespaceName& ns, const CIMObjectPath& objectName,
        const CIMName& resultClass, const String& role) override
    {
        Call c(Intrinsic::ReferenceNames, ns);
        c.with("ObjectName", CIMValue(objectName))
            .with("ResultClass", nameValue(resultClass))
            .with("Role", textValue(role));
        return array<CIMObjectPath>(call(c).returnValue);
    }

    CIMValue getProperty(
        const CIMNamespaceName& ns, const CIMObjectPath& instanceName, const CIMName& propertyName) override
    {
        Call c(Intrinsic::GetProperty, ns);
        c.with("InstanceName", CIMValue(instanceName))
            .with("PropertyName", CIMValue(propertyName.getString()));
        return call(c).returnValue;
    }

    void setProperty(const CIMNamespaceName& ns, const CIMObjectPath& instanceName,
        const CIMName& propertyName, const CIMValue& newValue) override
    {
        Call c(Intrinsic::SetProperty, ns);
        c.with("InstanceName", CIMValue(instanceName))
            .with("PropertyName", CIMValue(propertyName.getString()))
            .with("NewValue", newValue);
        call(c);
    }

    CIMValue invokeMethod(const CIMNamespaceName& ns, const CIMObjectPath& instanceName,
        const CIMName& methodName, const Array<CIMParamValue>& inParameters,
        Array<CIMParamValue>& outParameters) override
    {
        OperationRequest request;
        request.intrinsic = false;
        request.methodName = methodName;
        request.nameSpace = ns;
        CIMObjectPath target = instanceName;
        target.setHost(String());
        target.setNameSpace(CIMNamespaceName());
        request.target = target;
        request.parameters = inParameters;
        OperationResponse response = call(request);
        outParameters.appendArray(response.outParameters);
        return response.returnValue;
    }

private:
    CIMValue invokePullOperation(const CIMNamespaceName& ns, const String& operation,
        const Array<CIMParamValue>& inParameters, Array<CIMParamValue>& outParameters) override
    {
        Intrinsic op;
        if (!findIntrinsic(std::string(static_cast<const char*>(operation.getCString())), op))
            throw CIMException(CIM_ERR_NOT_SUPPORTED, operation + " is no pull operation.");
        Call c(op, ns);
        c.request.parameters = inParameters;
        OperationResponse r = call(c);
        outParameters.appendArray(r.outParameters);
        return r.returnValue;
    }

    OperationResponse call(Call& c) { return call(c.request); }

    OperationResponse call(OperationRequest& request)
    {
        request.messageId = std::to_string(++_nextMessageId);
        bhttp::request<bhttp::string_body> message{bhttp::verb::post, "/cimom", 11};
        message.set(bhttp::field::host, _hostHeader);
        message.set(bhttp::field::content_type, http::CONTENT_TYPE_XML);
        message.set(http::CIM_OPERATION, "MethodCall");
        message.set(http::CIM_METHOD, http::escapeHeaderValue(http::cimMethodOf(request)));
        message.set(http::CIM_OBJECT, http::escapeHeaderValue(http::cimObjectOf(request)));
        message.set(http::CIM_PROTOCOL_VERSION, "1.0");
        message.set(bhttp::field::te, "trailers");
        if (!_authorization.empty())
            message.set(bhttp::field::authorization, _authorization);
        {
            StringSink body;
            encodeRequest(request, body);
            message.body() = std::move(body.text);
        }
        message.keep_alive(true);
        message.prepare_payload();

        std::unique_ptr<bhttp::response_parser<bhttp::string_body>> parser;
        bool reused = _connection.isOpen();
        for (int attempt = 0;; attempt++)
        {
            if (!_connection.isOpen())
                _connection.open();
            parser.reset(new bhttp::response_parser<bhttp::string_body>);
            parser->body_limit(boost::none);
            if (_connection.exchange(message, *parser))
                break;
            _connection.close();
            if (!reused || attempt > 0)
                throw CIMClientResponseException(fromUtf8(
                    _connection.endpoint().description + " closed the connection without answering"));
        }
        bhttp::response<bhttp::string_body> answer = parser->release();
        if (!answer.keep_alive())
            _connection.close();
        return interpret(request, answer);
    }

    OperationResponse interpret(const OperationRequest& request, bhttp::response<bhttp::string_body>& answer)
    {
        if (answer.result_int() != 200)
        {
            std::string detail;
            const std::string& body = answer.body();
            if (body.size() < 512 && body.find('<') == std::string::npos)
                detail = body;
            throw CIMClientHTTPErrorException(answer.result_int(), fromUtf8(std::string(answer.reason())),
                fromUtf8(std::string(answer[http::CIM_ERROR])), fromUtf8(detail));
        }
        // A server that fails after starting a chunked answer says so in
        // the trailer.
        std::string status(answer[http::CIM_STATUS_CODE]);
        if (!status.empty() && status != "0")
        {
            unsigned long code = std::strtoul(status.c_str(), nullptr, 10);
            throw CIMException(CIMStatusCode(code == 0 ? Uint32(CIM_ERR_FAILED) : Uint32(code)),
                fromUtf8(http::unescapeHeaderValue(std::string(answer[http::CIM_STATUS_CODE_DESCRIPTION]))));
        }
        std::string contentType(answer[bhttp::field::content_type]);
        if (!http::isXmlContentType(contentType))
            throw CIMClientMalformedHTTPException(
                fromUtf8("the response's Content-Type is '" + contentType + "', not XML"));
        OperationResponse response;
        try
        {
            std::string& body = answer.body();
            response = decodeResponseInPlace(&body[0], body.size());
        }
        catch (const DecodeError& e)
        {
            throw CIMClientXmlException(fromUtf8(e.what()));
        }
        if (response.messageId != request.messageId || response.intrinsic != request.intrinsic ||
            response.name() != request.name())
            throw CIMClientResponseException(
                fromUtf8("the response (message " + response.messageId + ", " + utf8(response.name()) +
                    ") does not answer request " + request.messageId + " (" + utf8(request.name()) + ")"));
        if (response.isError())
            throw CIMException(CIMStatusCode(response.errorCode), response.errorDescription);
        return response;
    }

    Connection _connection;
    std::string _hostHeader;
    std::string _authorization;
    unsigned long _nextMessageId = 0;
};

std::string hostHeaderOf(const std::string& host, unsigned port)
{
    bool ipv6 = host.find(':') != std::string::npos;
    return (ipv6 ? "[" + host + "]" : host) + ":" + std::to_string(port);
}

}  // namespace

std::unique_ptr<CIMClientTransport> openNetworkTransport(const CIMClientNetworkTarget& target)
{
    Endpoint endpoint;
    endpoint.host = utf8(target.host);
    endpoint.port = target.portNumber;
    endpoint.description = hostHeaderOf(endpoint.host, endpoint.port);
    if (target.sslContext)
    {
        endpoint.kind = Endpoint::Tls;
        endpoint.trustStore = utf8(target.sslContext->getTrustStore());
        endpoint.certPath = utf8(target.sslContext->getCertPath());
        endpoint.keyPath = utf8(target.sslContext->getKeyPath());
        endpoint.verify = target.sslContext->getVerifyCertificateCallback();
    }
    std::string authorization;
    if (target.userName.size() > 0)
        authorization = "Basic " + base64(utf8(target.userName) + ":" + utf8(target.password));
    return std::unique_ptr<CIMClientTransport>(
        new XmlClientTransport(endpoint, endpoint.description, authorization, target.timeoutMilliseconds));
}

std::unique_ptr<CIMClientTransport> openLocalSocketTransport(
    const String& socketPath, Uint32 timeoutMilliseconds)
{
    Endpoint endpoint;
    endpoint.kind = Endpoint::Local;
    endpoint.socketPath = utf8(socketPath);
    endpoint.description = endpoint.socketPath;
    return std::unique_ptr<CIMClientTransport>(
        new XmlClientTransport(endpoint, "localhost", std::string(), timeoutMilliseconds));
}

void registerClientTransports()
{
    CIMClientTransports::setNetworkTransportFactory(&openNetworkTransport);
    CIMClientTransports::setLocalSocketTransportFactory(&openLocalSocketTransport);
}

namespace
{
// Loading the library makes CIMClient able to connect.
struct RegisterOnLoad
{
    RegisterOnLoad() { registerClientTransports(); }
} registerOnLoad;
}  // namespace

}  // namespace cimxml
