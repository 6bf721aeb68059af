#pragma once

#include "adapters/harness/OtherProgram.h"
#include "fakes/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace dorix {

/// A certificate that says of itself who it is: 127.0.0.1.
struct Certificate {
    Certificate() {
        OtherProgram openssl({"openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt",
                              "ec_paramgen_curve:prime256v1", "-nodes", "-subj", "/CN=test", "-addext",
                              "subjectAltName=IP:127.0.0.1", "-keyout", key, "-out", file});
        EXPECT_EQ(openssl.wait(), 0);
    }

    TemporaryFolder folder;
    std::string file = (folder.path() / "certificate.pem").string();
    std::string key = (folder.path() / "key.pem").string();
};

/// A server of the test's own, which is a program that prints its port; one that is given a certificate and
/// its key, as its last arguments, speaks TLS.
class WebServer {
 public:
    explicit WebServer(const std::vector<std::string>& command, const Certificate* certificate = nullptr)
        : scheme_(certificate == nullptr ? "http" : "https"), program_(whole(command, certificate)) {
        if (!eventually([this] { return program_.output().ends_with('\n'); }))
            throw std::runtime_error("no server");
        port_ = program_.output().substr(0, program_.output().size() - 1);
    }

    std::string url(const std::string& path) const { return scheme_ + "://127.0.0.1:" + port_ + "/" + path; }

 private:
    static std::vector<std::string> whole(std::vector<std::string> command, const Certificate* certificate) {
        if (certificate != nullptr) command.insert(command.end(), {certificate->file, certificate->key});
        return command;
    }

    std::string scheme_;
    OtherProgram program_;
    std::string port_;
};

}  // namespace dorix
