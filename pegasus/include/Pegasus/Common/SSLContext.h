// SSLContext: the TLS settings a client uses to reach a server over HTTPS.
//
// It only records settings; the network transport that speaks TLS reads them
// when CIMClient::connect() is given a context. Plain value semantics.
#ifndef Pegasus_SSLContext_h
#define Pegasus_SSLContext_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/String.h>

PEGASUS_NAMESPACE_BEGIN

// Details of a peer certificate, handed to a verification callback by the
// TLS transport, which defines this class.
class SSLCertificateInfo;

// Decides whether a peer certificate is acceptable; true accepts it.
typedef Boolean(SSLCertificateVerifyFunction)(SSLCertificateInfo& certInfo);

class PEGASUS_COMMON_LINKAGE SSLContext
{
public:
    // trustStore: a file or folder of CA certificates that verify the server
    // (empty: no verification beyond verifyCert). verifyCert may be null.
    // randomFile: seed file for the random generator, if the platform needs one.
    SSLContext(const String& trustStore, SSLCertificateVerifyFunction* verifyCert,
        const String& randomFile = String::EMPTY);

    // As above, with a client certificate and its private key (PEM files).
    SSLContext(const String& trustStore, const String& certPath, const String& keyPath,
        SSLCertificateVerifyFunction* verifyCert, const String& randomFile);

    SSLContext(const SSLContext& sslContext);
    ~SSLContext();
    SSLContext& operator=(const SSLContext& sslContext);

    String getTrustStore() const;
    String getCertPath() const;
    String getKeyPath() const;
    String getRandomFile() const;
    SSLCertificateVerifyFunction* getVerifyCertificateCallback() const;

private:
    String _trustStore;
    String _certPath;
    String _keyPath;
    String _randomFile;
    SSLCertificateVerifyFunction* _verifyCert;
};

PEGASUS_NAMESPACE_END

#endif
