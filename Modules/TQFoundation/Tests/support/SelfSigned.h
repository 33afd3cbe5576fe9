#pragma once

#include <openssl/ssl.h>
#include <openssl/x509v3.h>
#include <signal.h>

#include "support/LoopbackServer.h"

namespace tq::test {

/// A self-signed certificate for 127.0.0.1, its key, and a TLS server that uses them.
class SelfSigned {
 public:
  SelfSigned() {
    X509* const x509 = certificate_.get();
    ASN1_INTEGER_set(X509_get_serialNumber(x509), 1);
    X509_set_version(x509, 2);
    X509_gmtime_adj(X509_getm_notBefore(x509), -3600);
    X509_gmtime_adj(X509_getm_notAfter(x509), 3600);
    X509_set_pubkey(x509, key_.get());
    X509_NAME* const name = X509_get_subject_name(x509);
    const auto* const text = reinterpret_cast<const unsigned char*>("localhost");
    X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC, text, -1, -1, 0);
    X509_set_issuer_name(x509, name);
    X509_EXTENSION* const names =
        X509V3_EXT_conf_nid(nullptr, nullptr, NID_subject_alt_name, "IP:127.0.0.1");
    X509_add_ext(x509, names, -1);
    X509_EXTENSION_free(names);
    X509_sign(x509, key_.get(), EVP_sha256());
    SSL_CTX_use_certificate(context_.get(), x509);
    SSL_CTX_use_PrivateKey(context_.get(), key_.get());
  }

  /// Writes the certificate to a file in PEM form.
  void writeTo(const std::string& path) const {
    const std::unique_ptr<BIO, decltype(&BIO_free)> bio(BIO_new_file(path.c_str(), "w"), BIO_free);
    PEM_write_bio_X509(bio.get(), certificate_.get());
  }

  /// Accepts a TLS connection, reads a request and sends `page`; returns early if the client
  /// refuses.
  void answer(const Socket& socket, const std::string& page) const {
    sigset_t brokenPipe;  // on this thread only: the client must work without it
    sigemptyset(&brokenPipe);
    sigaddset(&brokenPipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &brokenPipe, nullptr);
    const std::unique_ptr<SSL, decltype(&SSL_free)> ssl(SSL_new(context_.get()), SSL_free);
    SSL_set_fd(ssl.get(), socket.get());
    char request[4096];
    if (SSL_accept(ssl.get()) != 1 || SSL_read(ssl.get(), request, sizeof request) <= 0) return;
    SSL_write(ssl.get(), page.data(), static_cast<int>(page.size()));
  }

 private:
  std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> key_{EVP_EC_gen("P-256"), EVP_PKEY_free};
  std::unique_ptr<X509, decltype(&X509_free)> certificate_{X509_new(), X509_free};
  std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)> context_{SSL_CTX_new(TLS_server_method()),
                                                             SSL_CTX_free};
};

}  // namespace tq::test
