// Turns one HTTP request into the HTTP answer: checks the method, the
// credentials and the CIM headers, decodes the CIM-XML body, calls the
// dispatcher as the authenticated user and encodes the result. Refusals
// carry the HTTP status and CIMError header clients expect; a request that
// is refused never reaches a provider.
#ifndef ZDA_CIMSERVER_CIM_REQUEST_HANDLER_H
#define ZDA_CIMSERVER_CIM_REQUEST_HANDLER_H

#include "Users.h"

#include <Dispatcher.h>

#include <boost/beast/http.hpp>

#include <string>

namespace zda::cimserver {

using HttpRequest = boost::beast::http::request<boost::beast::http::string_body>;
using HttpResponse = boost::beast::http::response<boost::beast::http::string_body>;

// Who is at the other end of a connection.
struct Peer {
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

struct HandlerOptions {
    std::string localUser = "admin";
    unsigned maxXmlDepth = 64;
};

class CimRequestHandler {
public:
    // `dispatcher` and `users` must outlive the handler. Thread-safe.
    CimRequestHandler(server::Dispatcher& dispatcher, const UserStore& users, HandlerOptions options);

    HttpResponse handle(const HttpRequest& request, Peer& peer) const;

    // A bare refusal (no body) with the CIMError header when `cimError` is
    // not empty; used by the listener for requests it refuses itself.
    static HttpResponse refusal(unsigned status, const std::string& cimError, unsigned version, bool keepAlive);

private:
    // The authenticated user, or empty when the credentials are missing or wrong.
    std::string authenticate(const HttpRequest& request, Peer& peer) const;

    server::Dispatcher& _dispatcher;
    const UserStore& _users;
    const HandlerOptions _options;
};

}  // namespace zda::cimserver

#endif
