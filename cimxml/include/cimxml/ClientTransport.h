// CIMClient over the network: CIM-XML on HTTP, HTTPS and a Unix domain
// socket.
//
// Linking zda_cimxml_client registers its transports with
// CIMClientTransports when the library is loaded; registerClientTransports()
// does the same explicitly (for programs whose linker drops libraries they
// name no symbol of, and after a test replaced the factories). Every
// transport keeps one connection open, reconnecting once when the server
// closed an idle one.
//
// HTTPS: the server's certificate is verified against the SSLContext's trust
// store (file or folder of PEM certificates) and its host name or address,
// or handed to the context's verification callback, whose answer decides.
// A context with neither trust store nor callback accepts any certificate:
// that is how a caller relaxes the check, explicitly.
//
// Failures: CannotConnectException (cannot reach or handshake),
// ConnectionTimeoutException (no answer in time), CIMClientHTTPErrorException
// (HTTP status other than 200), CIMClientMalformedHTTPException (not HTTP or
// not CIM-XML content), CIMClientXmlException (a body the codec refuses),
// CIMClientResponseException (an answer to another request), CIMException
// (the server's CIM error, with its code and description unchanged).
#ifndef ZDA_CIMXML_CLIENTTRANSPORT_H
#define ZDA_CIMXML_CLIENTTRANSPORT_H

#include <Pegasus/Client/CIMClientTransport.h>

#include <memory>

PEGASUS_NAMESPACE_BEGIN

// What the HTTPS transport tells a verification callback about one
// certificate of the server's chain (the deepest first).
class SSLCertificateInfo
{
public:
    SSLCertificateInfo(const String& subjectName, const String& issuerName, Uint32 errorDepth,
        Uint32 errorCode, const String& errorString)
        : _subject(subjectName), _issuer(issuerName), _depth(errorDepth), _code(errorCode),
          _errorString(errorString)
    {}
    // One-line distinguished names ("/CN=host/O=...").
    String getSubjectName() const { return _subject; }
    String getIssuerName() const { return _issuer; }
    // Position in the chain (0: the server's own certificate).
    Uint32 getErrorDepth() const { return _depth; }
    // The verification result against the trust store (0: passed) and its text.
    Uint32 getErrorCode() const { return _code; }
    String getErrorString() const { return _errorString; }

private:
    String _subject;
    String _issuer;
    Uint32 _depth;
    Uint32 _code;
    String _errorString;
};

PEGASUS_NAMESPACE_END

namespace cimxml
{

// Registers the network and local-socket factories. Thread-safe, idempotent.
void registerClientTransports();

// The transports themselves, for callers that want one without CIMClient.
// Both throw as described above.
std::unique_ptr<Pegasus::CIMClientTransport> openNetworkTransport(
    const Pegasus::CIMClientNetworkTarget& target);
std::unique_ptr<Pegasus::CIMClientTransport> openLocalSocketTransport(
    const Pegasus::String& socketPath, Pegasus::Uint32 timeoutMilliseconds);

}  // namespace cimxml

#endif
