// What the library's own code takes, piece by piece, without a server.

#include "log/GetFunctionName.h"
#include "log/LogStatement.h"
#include "tls/TlsTrust.h"
#include "transfer/CurlSFtpResponse.h"
#include "transfer/SftpWriteData.h"

#include <Certificates.h>

#include <benchmark/benchmark.h>
#include <openssl/ssl.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace {

void functionName(benchmark::State& state)
{
    const std::string signature = "bool CurlSFtpResponse::DownLoadSFtpFile(const SFtpRequest&, uint32_t)";
    while (state.KeepRunning()) {
        benchmark::DoNotOptimize(GetFunctionName(signature));
    }
}
BENCHMARK(functionName);

// Composed as the operations compose theirs, for a host that drops it.
void logRecord(benchmark::State& state)
{
    while (state.KeepRunning()) {
        SFTP_LOG(kLogFailure, "DownLoadSFtpFile() list dir failed.code:" << 78U);
    }
}
BENCHMARK(logRecord);

void handOver(benchmark::State& state, std::string line, size_t (*callback)(void*, size_t, size_t, void*))
{
    CurlSFtpResponse response;
    while (state.KeepRunning()) {
        benchmark::DoNotOptimize(callback(line.data(), 1, line.size(), &response));
        // It is never cleared, and each line would take longer than the one before.
        response.statusText.clear();
    }
}

void headerLine(benchmark::State& state)
{
    handOver(state, "Content-Type: application/octet-stream\r\n", CurlSFtpResponse::GetHeaderCallback);
}
BENCHMARK(headerLine);

void statusLine(benchmark::State& state)
{
    handOver(state, "FTP/1.0 226 Transfer complete\r\n", CurlSFtpResponse::GetHeaderCallback);
}
BENCHMARK(statusLine);

void certificateHook(benchmark::State& state)
{
    const std::string certificate = testserver::CertificateAuthority().certificatePem();
    while (state.KeepRunning()) {
        // A store of its own for each, as each TLS connection has one.
        state.PauseTiming();
        const std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)> context(SSL_CTX_new(TLS_client_method()), SSL_CTX_free);
        state.ResumeTiming();
        benchmark::DoNotOptimize(sftp_sslCtx_function(nullptr, context.get(), const_cast<std::string*>(&certificate)));
    }
}
BENCHMARK(certificateHook);

// One block of a TLS record's size into a file that drops it, as the library opens its local files.
void writeData(benchmark::State& state)
{
    const std::unique_ptr<FILE, int (*)(FILE*)> file(fopen("/dev/null", "w+"), fclose);
    static_cast<void>(setvbuf(file.get(), nullptr, _IONBF, 0));
    std::vector<char> block(16384);
    while (state.KeepRunning()) {
        benchmark::DoNotOptimize(sftp_write_data(block.data(), 1, block.size(), file.get()));
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(block.size()) * state.iterations());
}
BENCHMARK(writeData);

} // namespace

BENCHMARK_MAIN();
