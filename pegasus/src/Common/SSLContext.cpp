#include <Pegasus/Common/SSLContext.h>

PEGASUS_NAMESPACE_BEGIN

SSLContext::SSLContext(
    const String& trustStore, SSLCertificateVerifyFunction* verifyCert, const String& randomFile)
    : _trustStore(trustStore), _randomFile(randomFile), _verifyCert(verifyCert)
{}

SSLContext::SSLContext(const String& trustStore, const String& certPath, const String& keyPath,
    SSLCertificateVerifyFunction* verifyCert, const String& randomFile)
    : _trustStore(trustStore), _certPath(certPath), _keyPath(keyPath), _randomFile(randomFile),
      _verifyCert(verifyCert)
{}

SSLContext::SSLContext(const SSLContext& sslContext) = default;
SSLContext::~SSLContext() = default;
SSLContext& SSLContext::operator=(const SSLContext& sslContext) = default;

String SSLContext::getTrustStore() const
{
    return _trustStore;
}
String SSLContext::getCertPath() const
{
    return _certPath;
}
String SSLContext::getKeyPath() const
{
    return _keyPath;
}
String SSLContext::getRandomFile() const
{
    return _randomFile;
}

SSLCertificateVerifyFunction* SSLContext::getVerifyCertificateCallback() const
{
    return _verifyCert;
}

PEGASUS_NAMESPACE_END
