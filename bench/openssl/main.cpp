// A download or an upload with OpenSSL alone: the FTP that it needs, and a loop that decrypts what comes, or encrypts
// zeros. It is what no program with OpenSSL can be better than.

#include "Arguments.h"
#include "Channel.h"

#include <openssl/ssl.h>

#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

constexpr off_t kBlock = 65536;

// "ftp://localhost:PORT/PATH".
struct Place
{
    explicit Place(const std::string& url)
    {
        const std::string::size_type colon = url.rfind(':');
        const std::string::size_type slash = url.find('/', colon);
        port = std::stoi(url.substr(colon + 1, slash - colon - 1));
        path = url.substr(slash);
    }
    int port;
    std::string path;
};

// "229 Entering Extended Passive Mode (|||PORT|)".
int portIn(const std::string& reply) { return std::stoi(reply.substr(reply.find("(|||") + 4)); }

void receive(Channel& data)
{
    std::vector<char> block(kBlock);
    while (data.read(block.data(), block.size()) > 0) {
    }
}

void send(Channel& data, off_t left)
{
    const std::vector<char> block(kBlock);
    for (; left > 0; left -= kBlock) {
        data.write(block.data(), static_cast<std::size_t>(std::min(left, kBlock)));
    }
}

off_t sizeOf(const std::string& path)
{
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0) {
        throw std::runtime_error(path + " cannot be read");
    }
    return status.st_size;
}

void transfer(const Arguments& arguments)
{
    const Place place(arguments.request.remotePath);
    const TlsContext context(arguments.request.caCert);
    Channel control(place.port);
    control.expect("220");
    control.ask("AUTH TLS", "234");
    control.startTls(context, nullptr);
    control.ask("USER " + arguments.request.userName, "331");
    control.ask("PASS " + arguments.request.password, "230");
    control.ask("PBSZ 0", "200");
    control.ask("PROT P", "200");
    control.ask("TYPE I", "200");
    const bool sends = arguments.operation == "upload";
    Channel data(portIn(control.ask("EPSV", "229")));
    control.ask((sends ? "STOR " : "RETR ") + place.path, "150");
    data.startTls(context, &control);
    if (sends) {
        send(data, sizeOf(arguments.request.localPath));
    } else {
        receive(data);
    }
    data.end();
    control.expect("226");
    control.ask("QUIT", "221");
}

} // namespace

int main(int argc, char** argv)
try {
    const Arguments arguments = readArguments({argv + 1, argv + argc});
    if (arguments.operation != "download" && arguments.operation != "upload") {
        refuseOperation(arguments.operation, {"download", "upload"});
    }
    transfer(arguments);
    return 0;
} catch (const std::exception& error) {
    std::cerr << error.what() << "\n";
    return EXIT_FAILURE;
}
