#include "Certificate.h"

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <ctime>
#include <memory>

namespace zda::cimserver
{

namespace
{

struct Deleter
{
    void operator()(EVP_PKEY* p) const { EVP_PKEY_free(p); }
    void operator()(X509* p) const { X509_free(p); }
    void operator()(X509_EXTENSION* p) const { X509_EXTENSION_free(p); }
    void operator()(FILE* f) const { std::fclose(f); }
};
template <class T>
using Owned = std::unique_ptr<T, Deleter>;

bool exists(const std::string& path)
{
    struct stat st;
    return ::stat(path.c_str(), &st) == 0;
}

FILE* openForWriting(const std::string& path, mode_t mode)
{
    int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, mode);
    if (fd < 0)
        throw CertificateError("cannot write " + path);
    FILE* f = ::fdopen(fd, "w");
    if (!f)
    {
        ::close(fd);
        throw CertificateError("cannot write " + path);
    }
    return f;
}

}  // namespace

CertificateFiles ensureSelfSignedCertificate(const std::string& folder)
{
    CertificateFiles files{folder + "/server.crt", folder + "/server.key"};
    if (exists(files.certificate) && exists(files.key))
        return files;

    Owned<EVP_PKEY> key(EVP_EC_gen("P-256"));
    Owned<X509> cert(X509_new());
    if (!key || !cert)
        throw CertificateError("cannot make a key and certificate");
    X509_set_version(cert.get(), 2);
    ASN1_INTEGER_set(X509_get_serialNumber(cert.get()), long(std::time(nullptr) & 0x7FFFFFFF));
    X509_gmtime_adj(X509_getm_notBefore(cert.get()), -3600);
    X509_gmtime_adj(X509_getm_notAfter(cert.get()), 10L * 365 * 24 * 3600);
    X509_set_pubkey(cert.get(), key.get());
    X509_NAME* subject = X509_get_subject_name(cert.get());
    X509_NAME_add_entry_by_txt(
        subject, "CN", MBSTRING_ASC, reinterpret_cast<const unsigned char*>("localhost"), -1, -1, 0);
    X509_set_issuer_name(cert.get(), subject);
    X509V3_CTX ctx;
    X509V3_set_ctx_nodb(&ctx);
    X509V3_set_ctx(&ctx, cert.get(), cert.get(), nullptr, nullptr, 0);
    Owned<X509_EXTENSION> san(
        X509V3_EXT_conf_nid(nullptr, &ctx, NID_subject_alt_name, "DNS:localhost,IP:127.0.0.1,IP:::1"));
    if (!san || !X509_add_ext(cert.get(), san.get(), -1) || !X509_sign(cert.get(), key.get(), EVP_sha256()))
        throw CertificateError("cannot sign the certificate");

    {
        Owned<FILE> f(openForWriting(files.key, 0600));
        if (!PEM_write_PrivateKey(f.get(), key.get(), nullptr, nullptr, 0, nullptr, nullptr))
            throw CertificateError("cannot write " + files.key);
    }
    {
        Owned<FILE> f(openForWriting(files.certificate, 0644));
        if (!PEM_write_X509(f.get(), cert.get()))
            throw CertificateError("cannot write " + files.certificate);
    }
    return files;
}

}  // namespace zda::cimserver
