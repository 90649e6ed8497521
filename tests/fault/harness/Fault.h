#ifndef FAULT_HARNESS_FAULT_H
#define FAULT_HARNESS_FAULT_H

#include "harness/FaultCase.h"
#include "harness/Live.h"

#include <chrono>
#include <vector>

/// Runs a row's operation against the row's server and holds the outcome to the row.
class FaultRow : public Live, public testing::WithParamInterface<FaultCase>
{
protected:
    using Seconds = std::chrono::duration<double>;

    /// Builds what the row asks for: files, server, request.
    void arrange();

    void expectCode(int code) const;
    /// `code` is what the operation has ended with.
    void expectLeft(int code) const;

    const FaultCase& row() const { return GetParam(); }
    /// The file that the operation writes or changes.
    std::string target() const;

private:
    std::string urlOf(const Scene& scene) const;
};

/// The row through the library.
class Fault : public FaultRow
{
protected:
    /// The operation's result code. Measures the call, and the response's end, which says goodbye to the server.
    int operate();

    Seconds called = Seconds(0);
    Seconds released = Seconds(0);

private:
    boost::shared_ptr<ISFtpResponse> transfer(ISFtpClient& client) const;
};

/// The same row through the `curl` command.
class Tool : public FaultRow
{
protected:
    std::vector<std::string> arguments() const;
};

std::string nameOf(const testing::TestParamInfo<FaultCase>& info);

/// Those rows that the `curl` command can be told to run.
std::vector<FaultCase> replayed(const std::vector<FaultCase>& rows);

#endif
