#include "harness/Golden.h"

#include "doctor/Predictions.h"
#include "doctor/Renderers.h"
#include "support/Lines.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <regex>
#include <sstream>

namespace {

struct Replacement
{
    const char* pattern;
    const char* text;
};

const Replacement kReplacements[] = {
    {"localhost:[0-9]+", "localhost:PORT"},
    {"port [0-9]+", "port PORT"},
    {"localhost is [0-9a-f.:, ]+", "localhost is ADDRESSES"},
    {"(127\\.0\\.0\\.1|::1) port", "ADDRESS port"},
    {"valid from [^,]+,", "valid from DATE to DATE,"},
    {"serial [0-9A-F]+", "serial SERIAL"},
    {"SHA256:[0-9A-Za-z+/]+", "SHA256:FINGERPRINT"},
    {"\\[localhost\\]:[0-9]+ ([a-z0-9-]+) [0-9A-Za-z+/=]+", "[localhost]:PORT $1 KEY"},
    // Later releases of libcurl and OpenSSL say it otherwise.
    {"vsFTPd [0-9.]+", "vsFTPd 3.0.3"},
    {"Could not connect", "Couldn't connect"},
    {"tlsv1 alert (internal error|protocol version)", "tlsv1 alert REASON"},
    {"sftpclient-doctor-[0-9a-f]{16}", "sftpclient-doctor-NAME"},
    {"SSH-2.0-[^\n]+", "SSH-2.0-SOFTWARE"},
};

} // namespace

std::string normalisedTable(const doctor::Report& report)
{
    doctor::Report fixed = report;
    fixed.libcurl.number = 0x075801;
    fixed.libcurl.version = "7.88.1";
    fixed.libcurl.backEnds = "OpenSSL, libssh2";
    std::ostringstream stream;
    renderTable(fixed, predict(fixed), false, stream);
    std::string text = stream.str();
    for (const Replacement& each : kReplacements) {
        text = std::regex_replace(text, std::regex(each.pattern), each.text);
    }
    return text;
}

void expectGolden(const std::string& name, const std::string& text)
{
    const std::string path = std::string(GOLDEN_FOLDER) + "/" + name + ".txt";
    if (std::getenv("SFTPCLIENT_WRITE_GOLDEN") != nullptr) {
        writeFile(path, text);
    }
    EXPECT_TRUE(sameText(contentOf(path), text)) << path << "; SFTPCLIENT_WRITE_GOLDEN=1 writes it anew";
}
