#include "HttpServer.h"
#include "LoginThrottle.h"
#include "RequestPool.h"

#include <ServerLog.h>

#include <boost/asio.hpp>
#include <boost/asio/ssl.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/ssl.hpp>

#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <map>
#include <mutex>
#include <optional>
#include <thread>
#include <unordered_map>

namespace zda::cimserver
{

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace bhttp = boost::beast::http;
using boost::system::error_code;
using tcp = asio::ip::tcp;
using local = asio::local::stream_protocol;

namespace
{

using TcpStream = beast::tcp_stream;
using TlsStream = beast::ssl_stream<beast::tcp_stream>;
using LocalStream = beast::basic_stream<local>;

// Headers beyond this size are refused: CIM requests carry a handful.
constexpr std::uint32_t kMaxHeaderBytes = 16 * 1024;

// Bounds the blocking writes of streamed answers. A write that makes no
// progress until its deadline (a client that stopped reading) has its
// socket shut down,
// which makes the write fail at once; shutDownAll() does the same to every
// write under way, and to every later one, when the server stops.
class WriteWatchdog
{
public:
    using Clock = std::chrono::steady_clock;

    WriteWatchdog() : _thread([this] { run(); }) {}

    ~WriteWatchdog()
    {
        {
            std::lock_guard<std::mutex> lock(_mutex);
            _quit = true;
        }
        _wake.notify_all();
        _thread.join();
    }

    // Watches a write on `socket` that must end by `deadline`; release()
    // the returned ticket when the write has ended, before the socket closes.
    std::uint64_t watch(int socket, Clock::time_point deadline)
    {
        std::lock_guard<std::mutex> lock(_mutex);
        if (_stopping)
            ::shutdown(socket, SHUT_RDWR);
        const std::uint64_t ticket = ++_lastTicket;
        _watched.emplace(ticket, Watched{socket, deadline});
        // The watchdog sleeps until the earliest deadline it knows of, and
        // release() does not wake it. A streamed answer makes thousands of
        // writes with ever later deadlines: they only need a wake-up when
        // the watchdog would otherwise sleep past them, so it wakes about
        // once per allowance instead of once per write.
        if (deadline < _nextWake)
            _wake.notify_one();
        return ticket;
    }

    // Moves a watched write's deadline: it made progress.
    void renew(std::uint64_t ticket, Clock::time_point deadline)
    {
        std::lock_guard<std::mutex> lock(_mutex);
        auto found = _watched.find(ticket);
        if (found != _watched.end() && !found->second.shutDown)
            found->second.deadline = deadline;
    }

    void release(std::uint64_t ticket)
    {
        std::lock_guard<std::mutex> lock(_mutex);
        _watched.erase(ticket);
    }

    void shutDownAll()
    {
        std::lock_guard<std::mutex> lock(_mutex);
        _stopping = true;
        for (auto& entry : _watched)
            ::shutdown(entry.second.socket, SHUT_RDWR);
    }

private:
    struct Watched
    {
        int socket;
        Clock::time_point deadline;
        bool shutDown = false;
    };

    void run()
    {
        std::unique_lock<std::mutex> lock(_mutex);
        while (!_quit)
        {
            const Clock::time_point now = Clock::now();
            Clock::time_point next = Clock::time_point::max();
            for (auto& entry : _watched)
            {
                Watched& w = entry.second;
                if (w.deadline <= now && !w.shutDown)
                {
                    server::logFormat(
                        3, "zda-cimserver: closed a connection that stopped reading its answer");
                    ::shutdown(w.socket, SHUT_RDWR);
                    w.shutDown = true;
                }
                else if (!w.shutDown)
                {
                    next = std::min(next, w.deadline);
                }
            }
            _nextWake = next;
            if (next == Clock::time_point::max())
                _wake.wait(lock);
            else
                _wake.wait_until(lock, next);
        }
    }

    std::mutex _mutex;
    std::condition_variable _wake;
    std::map<std::uint64_t, Watched> _watched;
    std::uint64_t _lastTicket = 0;
    Clock::time_point _nextWake = Clock::time_point::max();  // when the watchdog next wakes by itself
    bool _stopping = false;
    bool _quit = false;
    std::thread _thread;  // last: starts once the rest is ready
};

// Counts the connections being served against the caps of ListenerOptions.
// A TCP connection starts unauthenticated and moves to the authenticated
// ones when its first request passes; the local socket is counted apart.
class ConnectionLimits
{
public:
    explicit ConnectionLimits(const ListenerOptions& options) : _options(options) {}

    // Why a new TCP connection is refused, or nullptr when it is admitted.
    const char* admitTcp(const std::string& address)
    {
        std::lock_guard<std::mutex> lock(_mutex);
        if (_tcp >= _options.maxConnections)
            return "too many connections";
        if (_unauthenticated >= _options.maxUnauthenticatedConnections)
            return "too many connections not yet authenticated";
        unsigned& fromAddress = _perAddress[address];
        if (fromAddress >= _options.maxConnectionsPerAddress)
            return "too many connections from one address";
        fromAddress++;
        _tcp++;
        _unauthenticated++;
        return nullptr;
    }

    void authenticated()
    {
        std::lock_guard<std::mutex> lock(_mutex);
        _unauthenticated--;
    }

    void closedTcp(const std::string& address, bool wasAuthenticated)
    {
        std::lock_guard<std::mutex> lock(_mutex);
        _tcp--;
        if (!wasAuthenticated)
            _unauthenticated--;
        auto found = _perAddress.find(address);
        if (found != _perAddress.end() && --found->second == 0)
            _perAddress.erase(found);
    }

    bool admitLocal()
    {
        std::lock_guard<std::mutex> lock(_mutex);
        if (_local >= _options.maxConnections)
            return false;
        _local++;
        return true;
    }

    void closedLocal()
    {
        std::lock_guard<std::mutex> lock(_mutex);
        _local--;
    }

private:
    const ListenerOptions& _options;
    std::mutex _mutex;
    unsigned _tcp = 0;
    unsigned _unauthenticated = 0;
    unsigned _local = 0;
    std::unordered_map<std::string, unsigned> _perAddress;
};

// The request body bytes all connections may hold at once.
class BodyBudget
{
public:
    explicit BodyBudget(std::size_t limit) : _limit(limit) {}

    bool reserve(std::size_t bytes)
    {
        std::size_t used = _used.load();
        do
        {
            if (bytes > _limit - used)
                return false;
        } while (!_used.compare_exchange_weak(used, used + bytes));
        return true;
    }

    void release(std::size_t bytes) { _used -= bytes; }

private:
    const std::size_t _limit;
    std::atomic<std::size_t> _used{0};
};

}  // namespace

class HttpServer::Impl
{
public:
    Impl(const CimRequestHandler& handler, ListenerOptions options)
        : handler(handler), options(std::move(options)), limits(this->options),
          bodies(this->options.maxBodyBytesInFlight), requests(this->options.threads),
          tls(asio::ssl::context::tls_server), httpAcceptor(io), httpsAcceptor(io), localAcceptor(io)
    {
        if (this->options.httpPort >= 0)
            openTcp(httpAcceptor, this->options.httpPort);
        if (this->options.httpsPort >= 0)
        {
            setUpTls();
            openTcp(httpsAcceptor, this->options.httpsPort);
        }
        if (!this->options.socketPath.empty())
            openLocal();
        if (httpAcceptor.is_open())
            acceptTcp(httpAcceptor, false);
        if (httpsAcceptor.is_open())
            acceptTcp(httpsAcceptor, true);
        if (localAcceptor.is_open())
            acceptLocal();
        unsigned n = std::max(1u, this->options.threads);
        for (unsigned i = 0; i < n; i++)
            threads.emplace_back([this] { io.run(); });
    }

    ~Impl() { stop(); }

    void stop()
    {
        if (stopped.exchange(true))
            return;
        // Answers being streamed to clients end now instead of waiting for
        // the clients to read them.
        watchdog.shutDownAll();
        asio::post(io, [this] {
            error_code ignored;
            httpAcceptor.close(ignored);
            httpsAcceptor.close(ignored);
            localAcceptor.close(ignored);
        });
        // Handlers running now (requests being served) finish; pending
        // reads and writes are dropped with the io_context.
        io.stop();
        for (auto& t : threads)
            t.join();
        threads.clear();
        // Requests still running finish (their writes fail at once).
        requests.stop();
        if (!options.socketPath.empty())
            ::unlink(options.socketPath.c_str());
    }

    void openTcp(tcp::acceptor& acceptor, int port)
    {
        error_code ec;
        auto address = asio::ip::make_address(options.bindAddress, ec);
        if (ec)
            throw ListenerError("not an IP address to listen on: " + options.bindAddress);
        tcp::endpoint where(address, static_cast<unsigned short>(port));
        acceptor.open(where.protocol(), ec);
        if (!ec)
            acceptor.set_option(asio::socket_base::reuse_address(true), ec);
        if (!ec)
            acceptor.bind(where, ec);
        if (!ec)
            acceptor.listen(asio::socket_base::max_listen_connections, ec);
        if (ec)
            throw ListenerError("cannot listen on " + options.bindAddress + " port " + std::to_string(port) +
                ": " + ec.message());
    }

    void openLocal()
    {
        // A socket file left by a server that did not stop cleanly.
        ::unlink(options.socketPath.c_str());
        error_code ec;
        local::endpoint where(options.socketPath);
        localAcceptor.open(where.protocol(), ec);
        if (!ec)
            localAcceptor.bind(where, ec);
        if (!ec)
            localAcceptor.listen(asio::socket_base::max_listen_connections, ec);
        if (ec)
            throw ListenerError(
                "cannot listen on the local socket " + options.socketPath + ": " + ec.message());
        // Any local user may connect; only trusted peers skip the password.
        ::chmod(options.socketPath.c_str(), 0666);
    }

    void setUpTls()
    {
        tls.set_options(asio::ssl::context::default_workarounds | asio::ssl::context::no_sslv2 |
            asio::ssl::context::no_sslv3 | asio::ssl::context::no_tlsv1 | asio::ssl::context::no_tlsv1_1 |
            asio::ssl::context::single_dh_use);
        SSL_CTX_set_min_proto_version(tls.native_handle(), TLS1_2_VERSION);
        error_code ec;
        tls.use_certificate_chain_file(options.certificateFile, ec);
        if (ec)
            throw ListenerError(
                "cannot use the certificate " + options.certificateFile + ": " + ec.message());
        tls.use_private_key_file(options.keyFile, asio::ssl::context::pem, ec);
        if (ec)
            throw ListenerError("cannot use the private key " + options.keyFile + ": " + ec.message());
    }

    template <class Stream>
    class Session;

    void acceptTcp(tcp::acceptor& acceptor, bool secure);
    void acceptLocal();

    const CimRequestHandler& handler;
    const ListenerOptions options;
    // Sessions still queued when the io_context goes touch these: they are
    // declared (and so outlive it) before it.
    ConnectionLimits limits;
    BodyBudget bodies;
    LoginThrottle logins;
    LogLimiter refusals{10, std::chrono::minutes(1)};
    std::atomic<bool> stopped{false};
    WriteWatchdog watchdog;
    RequestPool requests;
    asio::io_context io;
    asio::ssl::context tls;
    tcp::acceptor httpAcceptor;
    tcp::acceptor httpsAcceptor;
    local::acceptor localAcceptor;
    std::vector<std::thread> threads;
};

// One connection: reads a request's headers, checks its credentials, reads
// its body, runs it on the request pool and answers it, and repeats while
// both sides keep the connection alive. Handlers run on the connection's
// strand; while a request runs on the pool no handler of the connection is
// pending, so the request's thread may write to the stream.
template <class Stream>
class HttpServer::Impl::Session : public std::enable_shared_from_this<Session<Stream>>
{
public:
    static constexpr bool kLocal = std::is_same_v<Stream, LocalStream>;
    static constexpr bool kSecure = std::is_same_v<Stream, TlsStream>;

    template <class... Args>
    Session(Impl& owner, Peer peer, Args&&... args)
        : _owner(owner), _peer(std::move(peer)), _stream(std::forward<Args>(args)...),
          _pause(_stream.get_executor())
    {}

    ~Session()
    {
        releaseBody();
        if (!_admitted)
            return;
        if constexpr (kLocal)
            _owner.limits.closedLocal();
        else
            _owner.limits.closedTcp(_peer.address, _authenticated);
    }

    void start()
    {
        const char* refusal = nullptr;
        if constexpr (kLocal)
            refusal = _owner.limits.admitLocal() ? nullptr : "too many local connections";
        else
            refusal = _owner.limits.admitTcp(_peer.address);
        if (refusal)
        {
            _owner.refusals.warn(std::string("refused a connection from ") +
                (kLocal ? std::string("the local socket") : _peer.address) + ": " + refusal);
            if constexpr (kSecure)
            {
                // No handshake is spent on a connection that is refused.
                error_code ignored;
                beast::get_lowest_layer(_stream).socket().close(ignored);
            }
            else
            {
                _response = CimRequestHandler::refusal(503, "", 11, false);
                write();
            }
            return;
        }
        _admitted = true;
        if (_peer.trustedLocal)
            _authenticated = true;
        if constexpr (kSecure)
        {
            beast::get_lowest_layer(_stream).expires_after(idleTimeout());
            _stream.async_handshake(
                asio::ssl::stream_base::server, [self = this->shared_from_this()](error_code ec) {
                    if (!ec)
                        self->readHeader();
                });
        }
        else
        {
            readHeader();
        }
    }

private:
    std::chrono::milliseconds idleTimeout() const
    {
        return _authenticated ? _owner.options.headerTimeout
                              : std::min(_owner.options.headerTimeout, _owner.options.unauthenticatedTimeout);
    }

    void readHeader()
    {
        releaseBody();
        _parser.emplace();
        _parser->header_limit(kMaxHeaderBytes);
        _parser->body_limit(_owner.options.maxRequestBytes);
        beast::get_lowest_layer(_stream).expires_after(idleTimeout());
        bhttp::async_read_header(_stream, _buffer, *_parser,
            [self = this->shared_from_this()](error_code ec, std::size_t) { self->onHeader(ec); });
    }

    void onHeader(error_code ec)
    {
        // A Content-Length beyond the body limit fails the header read.
        if (ec == bhttp::error::body_limit)
        {
            refuseTooLarge();
            return;
        }
        if (ec)
        {
            refuseBroken(ec);
            return;
        }
        auto length = _parser->content_length();
        if (length && *length > _owner.options.maxRequestBytes)
        {
            refuseTooLarge();
            return;
        }
        // Credentials are checked on the headers: nothing of the body is
        // read, and no 100-continue sent, for a client that cannot log in.
        beast::get_lowest_layer(_stream).expires_never();
        std::string user;
        switch (_owner.handler.checkCredentials(_parser->get(), _peer, false, user))
        {
        case CimRequestHandler::Credentials::Accepted: onAuthenticated(); return;
        case CimRequestHandler::Credentials::Refused: refuseCredentials(user, false); return;
        case CimRequestHandler::Credentials::NeedsHash: break;
        }
        // The password hash runs on the request pool, after the wait that
        // the address's recent failures have earned (a timer: no thread
        // waits for it).
        std::optional<LoginThrottle::Clock::time_point> turn = _owner.logins.admit(_peer.address);
        if (!turn)
        {
            refuseCredentials(user, true);
            return;
        }
        _pause.expires_at(*turn);
        _pause.async_wait([self = this->shared_from_this()](error_code ec) {
            if (ec)
                return;
            self->_owner.requests.post([self] {
                std::string user;
                bool accepted = self->_owner.handler.checkCredentials(self->_parser->get(), self->_peer, true,
                                    user) == CimRequestHandler::Credentials::Accepted;
                asio::post(self->_stream.get_executor(), [self, accepted, user = std::move(user)] {
                    if (accepted)
                    {
                        self->_owner.logins.succeeded(self->_peer.address);
                        self->onAuthenticated();
                    }
                    else
                    {
                        self->refuseCredentials(user, true);
                    }
                });
            });
        });
    }

    // A 401. `counted`: wrong credentials that count as a failed login
    // (not a request that just came without any). The body, if any, is
    // left unread, so the connection closes after the answer.
    void refuseCredentials(const std::string& user, bool counted)
    {
        if (counted)
            _owner.logins.failed(_peer.address, UserStore::validUserName(user) ? user : std::string());
        const auto& head = _parser->get();
        const bool noBody = !head.chunked() && _parser->content_length().value_or(0) == 0;
        _response = CimRequestHandler::authenticationRequired(head.version(), head.keep_alive() && noBody);
        write();
    }

    void onAuthenticated()
    {
        if (!_authenticated)
        {
            _authenticated = true;
            if constexpr (!kLocal)
                _owner.limits.authenticated();
        }
        // A chunked body may grow to the limit.
        std::size_t bytes = _parser->get().chunked() ? _owner.options.maxRequestBytes
                                                     : std::size_t(_parser->content_length().value_or(0));
        if (bytes > 0 && !_owner.bodies.reserve(bytes))
        {
            _owner.refusals.warn("refused a request body of " + std::to_string(bytes) +
                " bytes: the bodies being received already fill the allowance");
            _response = CimRequestHandler::refusal(503, "", _parser->get().version(), false);
            _response.set(bhttp::field::retry_after, "1");
            write();
            return;
        }
        _reservedBody = bytes;
        beast::get_lowest_layer(_stream).expires_after(_owner.options.bodyTimeout);
        // A client that asks whether to send its body is told to go on.
        if (beast::iequals(_parser->get()[bhttp::field::expect], "100-continue"))
        {
            _continue = std::make_shared<bhttp::response<bhttp::empty_body>>(bhttp::status::continue_, 11);
            bhttp::async_write(
                _stream, *_continue, [self = this->shared_from_this()](error_code ec, std::size_t) {
                    if (ec)
                        self->close();
                    else
                        self->readBody();
                });
            return;
        }
        readBody();
    }

    void releaseBody()
    {
        if (_reservedBody)
        {
            _owner.bodies.release(_reservedBody);
            _reservedBody = 0;
        }
    }

    void readBody()
    {
        bhttp::async_read(_stream, _buffer, *_parser,
            [self = this->shared_from_this()](error_code ec, std::size_t) { self->onBody(ec); });
    }

    void onBody(error_code ec)
    {
        if (ec)
        {
            if (ec == bhttp::error::body_limit)
                refuseTooLarge();
            else
                refuseBroken(ec);
            return;
        }
        // The request runs on the request pool, so that a long answer to a
        // slow client holds none of the threads that read requests.
        beast::get_lowest_layer(_stream).expires_never();
        _owner.requests.post([self = this->shared_from_this()] { self->serve(); });
    }

    // On a request pool thread: runs the request, then hands what comes
    // next back to the connection's strand.
    void serve()
    {
        Streamer streamer(*this);
        std::optional<HttpResponse> response;
        bool lost = false;
        try
        {
            response = _owner.handler.handle(_parser->get(), _peer, streamer);
        }
        catch (const ConnectionLost& e)
        {
            server::logFormat(3, "zda-cimserver: lost a connection while streaming an answer: %s", e.what());
            lost = true;
        }
        catch (const std::exception& e)
        {
            // Out of memory while encoding, and the like: the pool thread
            // carries on, the client learns that this request failed.
            server::logFormat(2, "zda-cimserver: request failed: %s", e.what());
            response = CimRequestHandler::refusal(500, "", _parser->get().version(), false);
        }
        catch (...)
        {
            server::logFormat(2, "zda-cimserver: request failed");
            response = CimRequestHandler::refusal(500, "", _parser->get().version(), false);
        }
        enum
        {
            Close,
            ReadNext,
            Answer
        } next = Answer;
        if (lost || streamer.begun() || !response)
        {
            // A failure after the head went out cannot be answered any more:
            // closing cuts the body short.
            next = !lost && streamer.ended() && streamer.keepAlive() && !response ? ReadNext : Close;
        }
        asio::post(_stream.get_executor(),
            [self = this->shared_from_this(), next, response = std::move(response)]() mutable {
                self->releaseBody();
                std::string().swap(self->_parser->get().body());
                if (next == Close)
                {
                    self->close();
                }
                else if (next == ReadNext)
                {
                    self->readHeader();
                }
                else
                {
                    self->_response = std::move(*response);
                    self->write();
                }
            });
    }

    // Writes a streamed answer on the connection, synchronously, each write
    // bounded by the watchdog.
    class Streamer : public ResponseStream
    {
    public:
        explicit Streamer(Session& session) : _session(session) {}

        void begin(HttpResponseHead& head) override
        {
            _chunked = head.version() >= 11;
            if (_chunked)
            {
                head.chunked(true);
            }
            else
            {
                // The body ends with the connection, and has no trailer.
                head.keep_alive(false);
                head.erase(bhttp::field::trailer);
            }
            _keepAlive = head.keep_alive();
            _begun = true;
            bhttp::response_serializer<bhttp::empty_body> serializer{head};
            guarded([&](auto&, error_code& ec) { bhttp::write_header(_session._stream, serializer, ec); });
        }

        void send(const char* data, std::size_t size) override
        {
            if (size == 0)
                return;
            guarded([&](auto& progress, error_code& ec) {
                if (_chunked)
                    asio::write(_session._stream, bhttp::make_chunk(asio::buffer(data, size)), progress, ec);
                else
                    asio::write(_session._stream, asio::buffer(data, size), progress, ec);
            });
        }

        void end(const bhttp::fields& trailer) override
        {
            if (_chunked)
                guarded([&](auto& progress, error_code& ec) {
                    asio::write(_session._stream, bhttp::make_chunk_last(trailer), progress, ec);
                });
            _ended = true;
        }

        bool begun() const { return _begun; }
        bool ended() const { return _ended; }
        bool keepAlive() const { return _keepAlive; }

    private:
        // Runs `write(progress, ec)` under the watchdog. `progress` is a
        // completion condition for asio::write: each part of the write that
        // got through moves the deadline, so a slow client that keeps
        // reading is never cut off, one that stopped is after sendTimeout.
        template <class Write>
        void guarded(Write write)
        {
            int socket = beast::get_lowest_layer(_session._stream).socket().native_handle();
            WriteWatchdog& watchdog = _session._owner.watchdog;
            const auto allowance = _session._owner.options.sendTimeout;
            std::uint64_t ticket = watchdog.watch(socket, WriteWatchdog::Clock::now() + allowance);
            std::size_t lastTotal = 0;
            auto progress = [&](const error_code& ec, std::size_t total) -> std::size_t {
                if (total != lastTotal)
                {
                    lastTotal = total;
                    watchdog.renew(ticket, WriteWatchdog::Clock::now() + allowance);
                }
                return asio::transfer_all()(ec, total);
            };
            error_code ec;
            write(progress, ec);
            watchdog.release(ticket);
            if (ec)
                throw ConnectionLost(ec.message());
        }

        Session& _session;
        bool _chunked = false;
        bool _keepAlive = false;
        bool _begun = false;
        bool _ended = false;
    };

    void refuseTooLarge()
    {
        server::logFormat(
            3, "zda-cimserver: refused a request of more than %zu bytes", _owner.options.maxRequestBytes);
        _response = CimRequestHandler::refusal(413, "request-not-valid", _parser->get().version(), false);
        write();
    }

    // Protocol errors get a 400 before the connection closes; a client that
    // went away or stopped sending is just closed.
    void refuseBroken(error_code ec)
    {
        if (ec == bhttp::error::end_of_stream || ec == beast::error::timeout || ec == asio::error::eof ||
            ec == asio::error::connection_reset || ec == asio::error::operation_aborted ||
            ec.category() == asio::error::get_ssl_category() || ec == asio::ssl::error::stream_truncated)
        {
            if (ec == beast::error::timeout)
                server::logFormat(3, "zda-cimserver: closed a connection that stopped sending");
            close();
            return;
        }
        unsigned status = ec == bhttp::error::header_limit ? 431 : 400;
        _response = CimRequestHandler::refusal(status, "", 11, false);
        write();
    }

    void write()
    {
        beast::get_lowest_layer(_stream).expires_after(_owner.options.sendTimeout);
        bhttp::async_write(_stream, _response, [self = this->shared_from_this()](error_code ec, std::size_t) {
            if (!ec && self->_response.keep_alive())
                self->readHeader();
            else
                self->close();
        });
    }

    void close()
    {
        error_code ignored;
        if constexpr (kSecure)
        {
            beast::get_lowest_layer(_stream).expires_after(std::chrono::seconds(2));
            _stream.async_shutdown([self = this->shared_from_this()](error_code) {
                error_code ignored;
                beast::get_lowest_layer(self->_stream).socket().close(ignored);
            });
        }
        else
        {
            _stream.socket().shutdown(asio::socket_base::shutdown_send, ignored);
            _stream.socket().close(ignored);
        }
    }

    Impl& _owner;
    Peer _peer;
    Stream _stream;
    asio::steady_timer _pause;  // the wait before a throttled password check
    bool _admitted = false;
    bool _authenticated = false;
    std::size_t _reservedBody = 0;
    beast::flat_buffer _buffer;
    std::optional<bhttp::request_parser<bhttp::string_body>> _parser;
    HttpResponse _response;
    std::shared_ptr<bhttp::response<bhttp::empty_body>> _continue;
};

void HttpServer::Impl::acceptTcp(tcp::acceptor& acceptor, bool secure)
{
    acceptor.async_accept(
        asio::make_strand(io), [this, &acceptor, secure](error_code ec, tcp::socket socket) {
            if (ec == asio::error::operation_aborted || !acceptor.is_open())
                return;
            if (!ec)
            {
                Peer peer;
                error_code ignored;
                auto remote = socket.remote_endpoint(ignored);
                auto address = remote.address();
                if (address.is_v6() && address.to_v6().is_v4_mapped())
                    address = asio::ip::make_address_v4(asio::ip::v4_mapped, address.to_v6());
                peer.address = address.to_string();
                // Streamed answers end with a short write that must not wait
                // for the acknowledgement of the data before it.
                socket.set_option(tcp::no_delay(true), ignored);
                if (secure)
                    std::make_shared<Session<TlsStream>>(*this, std::move(peer), std::move(socket), tls)
                        ->start();
                else
                    std::make_shared<Session<TcpStream>>(*this, std::move(peer), std::move(socket))->start();
            }
            acceptTcp(acceptor, secure);
        });
}

void HttpServer::Impl::acceptLocal()
{
    localAcceptor.async_accept(asio::make_strand(io), [this](error_code ec, local::socket socket) {
        if (ec == asio::error::operation_aborted || !localAcceptor.is_open())
            return;
        if (!ec)
        {
            Peer peer;
            struct ucred credentials
            {};
            socklen_t size = sizeof credentials;
            if (::getsockopt(socket.native_handle(), SOL_SOCKET, SO_PEERCRED, &credentials, &size) == 0)
                peer.trustedLocal = credentials.uid == ::geteuid() || credentials.uid == 0;
            std::make_shared<Session<LocalStream>>(*this, std::move(peer), std::move(socket))->start();
        }
        acceptLocal();
    });
}

HttpServer::HttpServer(const CimRequestHandler& handler, ListenerOptions options)
    : _impl(new Impl(handler, std::move(options)))
{}

HttpServer::~HttpServer() = default;

void HttpServer::stop()
{
    _impl->stop();
}

std::vector<std::string> HttpServer::urls() const
{
    std::vector<std::string> out;
    std::string host = _impl->options.bindAddress;
    if (host.find(':') != std::string::npos)
        host = "[" + host + "]";
    error_code ec;
    if (_impl->httpAcceptor.is_open())
        out.push_back("http://" + host + ":" + std::to_string(_impl->httpAcceptor.local_endpoint(ec).port()));
    if (_impl->httpsAcceptor.is_open())
        out.push_back(
            "https://" + host + ":" + std::to_string(_impl->httpsAcceptor.local_endpoint(ec).port()));
    return out;
}

}  // namespace zda::cimserver
