// The server's listeners: HTTP and HTTPS on TCP and HTTP on a Unix domain
// socket. Each connection reads requests one after the other (keep-alive),
// under the limits below, checks the credentials on the headers before it
// reads a body, and hands each complete request to the CimRequestHandler on
// a thread of the RequestPool.
#ifndef ZDA_CIMSERVER_HTTP_SERVER_H
#define ZDA_CIMSERVER_HTTP_SERVER_H

#include "CimRequestHandler.h"

#include <chrono>
#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace zda::cimserver
{

struct ListenerOptions
{
    std::string bindAddress = "127.0.0.1";
    // -1: no such listener; 0: a free port chosen by the system.
    int httpPort = 5988;
    int httpsPort = 5989;
    // PEM certificate chain and private key of the HTTPS listener.
    std::string certificateFile;
    std::string keyFile;
    // The local socket's path; empty: no local socket.
    std::string socketPath;

    // Largest request body accepted (413 beyond it).
    std::size_t maxRequestBytes = 32u << 20;
    // Request bodies held at once across all connections: a request whose
    // body does not fit beside the others gets 503 before it is read.
    std::size_t maxBodyBytesInFlight = 128u << 20;
    // Time a client has to send a request's headers (also the idle time of
    // a kept-alive connection) and then its body; a connection that misses
    // either is closed. A connection that has not yet authenticated gets
    // the shorter unauthenticatedTimeout for its handshake and headers.
    std::chrono::milliseconds headerTimeout{30000};
    std::chrono::milliseconds bodyTimeout{120000};
    std::chrono::milliseconds unauthenticatedTimeout{10000};
    // Time an answer may go without any of it being taken by the client;
    // then the connection is dropped (a client that stopped reading).
    std::chrono::milliseconds sendTimeout{20000};
    // TCP connections served at once, of them at most
    // maxUnauthenticatedConnections not yet authenticated, and at most
    // maxConnectionsPerAddress from one client address; more get 503 and
    // are closed. The local socket has a cap of maxConnections of its own.
    unsigned maxConnections = 128;
    unsigned maxUnauthenticatedConnections = 64;
    unsigned maxConnectionsPerAddress = 32;
    // Threads that read requests; as many more wait to run requests, and
    // more are started while every one of them is busy.
    unsigned threads = 4;
};

class ListenerError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

class HttpServer
{
public:
    // Opens the listeners (throws ListenerError when one cannot be opened)
    // and starts the threads. `handler` must outlive the server.
    HttpServer(const CimRequestHandler& handler, ListenerOptions options);
    // Stops.
    ~HttpServer();

    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;

    // The URLs served ("http://127.0.0.1:5988"), HTTP first.
    std::vector<std::string> urls() const;

    // Closes the listeners and every connection, lets requests being
    // served finish and joins the threads. Idempotent; not to be called
    // from a pool thread.
    void stop();

private:
    class Impl;
    std::unique_ptr<Impl> _impl;
};

}  // namespace zda::cimserver

#endif
