// Turns one HTTP request into the HTTP answer: checks the method, the
// credentials and the CIM headers, decodes the CIM-XML body, calls the
// dispatcher as the authenticated user and encodes the result. Refusals
// carry the HTTP status and CIMError header clients expect; a request that
// is refused never reaches a provider.
//
// Enumerations and association results are encoded while the providers
// deliver them. An answer that fits in one piece of the encoder goes back
// whole, with a Content-Length; a longer one is streamed through the
// connection's ResponseStream (chunked on HTTP/1.1), so that the server
// never holds it whole. A CIM error before the answer started streaming is
// an ordinary error response; once it has started, the body is cut short
// (so that no client takes it for a complete answer) and the error is sent
// in the trailer fields CIMStatusCode and CIMStatusCodeDescription.
#ifndef ZDA_CIMSERVER_CIM_REQUEST_HANDLER_H
#define ZDA_CIMSERVER_CIM_REQUEST_HANDLER_H

#include "Users.h"

#include <Dispatcher.h>
#include <EnumerationContexts.h>

#include <boost/beast/http.hpp>

#include <cstddef>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

namespace zda::cimserver
{

using HttpRequest = boost::beast::http::request<boost::beast::http::string_body>;
using HttpRequestHead = boost::beast::http::request_header<>;
using HttpResponse = boost::beast::http::response<boost::beast::http::string_body>;
using HttpResponseHead = boost::beast::http::response<boost::beast::http::empty_body>;

// The connection went away, or stopped reading, while an answer was being
// streamed: nothing more can be sent on it.
class ConnectionLost : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

// The connection's side of a streamed answer. The handler calls begin()
// once, send() for each piece of the body in order, then end(); the calls
// block until the bytes are handed to the connection (which bounds the
// memory a slow client can make the server hold). Each throws
// ConnectionLost when the connection fails or the client stops reading.
class ResponseStream
{
public:
    virtual ~ResponseStream() = default;
    // Sends the head: `head` has the status and the fields, no length.
    // On HTTP/1.1 the body is chunked; an HTTP/1.0 body ends when the
    // connection closes.
    virtual void begin(HttpResponseHead& head) = 0;
    virtual void send(const char* data, std::size_t size) = 0;
    // Ends the body; `trailer` goes in the chunked body's trailer (an
    // HTTP/1.0 body has none: the connection just closes).
    virtual void end(const boost::beast::http::fields& trailer) = 0;
};

// Who is at the other end of a connection.
struct Peer
{
    // The client's IP address as text; empty for the local socket.
    std::string address;
    // A local-socket peer whose credentials the server trusts: it runs as
    // the server's local user without a password.
    bool trustedLocal = false;
    // The last Authorization header this connection passed, and its user:
    // a keep-alive client repeating it is not checked again (password
    // hashes are slow on purpose).
    std::string verifiedAuthorization;
    std::string verifiedUser;
};

struct HandlerOptions
{
    std::string localUser = "admin";
    unsigned maxXmlDepth = 64;
    // Enumeration contexts of the pull operations.
    server::PullLimits pull;
};

class CimRequestHandler
{
public:
    // `dispatcher` and `users` must outlive the handler. Thread-safe.
    CimRequestHandler(server::Dispatcher& dispatcher, const UserStore& users, HandlerOptions options);

    // The answer to send, or nothing when the answer was streamed through
    // `stream` (which has then seen begin() and end()). Throws
    // ConnectionLost from the stream.
    std::optional<HttpResponse> handle(const HttpRequest& request, Peer& peer, ResponseStream& stream) const;

    // Checks the credentials in a request's headers, before its body is
    // read. Without `mayHash` only what needs no password hash is decided
    // (a trusted local peer, the connection's verified header, a credential
    // that verified recently); the rest is NeedsHash, known user or not.
    // Accepted sets `user`; otherwise `user` holds the name the credentials
    // gave, if any.
    enum class Credentials
    {
        Accepted,
        Refused,
        NeedsHash
    };
    Credentials checkCredentials(
        const HttpRequestHead& head, Peer& peer, bool mayHash, std::string& user) const;

    // A 401 answer asking for Basic credentials.
    static HttpResponse authenticationRequired(unsigned version, bool keepAlive);

    // A bare refusal (no body) with the CIMError header when `cimError` is
    // not empty; used by the listener for requests it refuses itself.
    static HttpResponse refusal(
        unsigned status, const std::string& cimError, unsigned version, bool keepAlive);

private:
    server::Dispatcher& _dispatcher;
    const UserStore& _users;
    const HandlerOptions _options;
    std::unique_ptr<server::EnumerationContexts> _pulls;
};

}  // namespace zda::cimserver

#endif
