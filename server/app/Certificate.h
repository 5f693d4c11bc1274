// The HTTPS listener's certificate when the configuration names none: a
// self-signed pair made once and kept in the state folder.
#ifndef ZDA_CIMSERVER_CERTIFICATE_H
#define ZDA_CIMSERVER_CERTIFICATE_H

#include <stdexcept>
#include <string>

namespace zda::cimserver
{

class CertificateError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

struct CertificateFiles
{
    std::string certificate;
    std::string key;
};

// <folder>/server.crt and <folder>/server.key; when either is missing, a new
// P-256 key and a self-signed certificate for localhost and 127.0.0.1
// (valid ten years) are written there first (the key with mode 0600).
// Throws CertificateError.
CertificateFiles ensureSelfSignedCertificate(const std::string& folder);

}  // namespace zda::cimserver

#endif
