#ifndef DOCTOR_HARNESS_WRITE_H
#define DOCTOR_HARNESS_WRITE_H

#include "harness/DoctorProcess.h"
#include "harness/Examined.h"

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

/// The base of the tests of "doctor --write", run as a process against the test server.
class Write : public Examined
{
protected:
    /// For a round trip in this directory of the server.
    Words arguments(const std::string& directory = "/");

    /// With a separate folder for its temporary files.
    Variables variables();

    /// Runs it and keeps its report.
    int write(const std::string& directory = "/", const Words& more = {});

    /// Keeps its report. Returns the exit status.
    int report(DoctorProcess& process);

    /// Makes the server refuse all that removes a file.
    void refuseToRemove();

    nlohmann::json predictionOf(const std::string& operation) const;
    /// "fails 19"; "unknown " without a code.
    std::string outlookOf(const std::string& operation) const;
    std::string reasonOf(const std::string& operation) const { return predictionOf(operation)["reason"]; }

    /// What the report says about the round trip as a whole.
    std::string roundTrip(const std::string& which = "round trip") const;

    bool nothingIsLeft() const;
    bool nothingIsLeftHere() const;
    void expectNothingLeft() const;
    /// So many files, which the report names.
    void expectLeftBehind(std::size_t files) const;

    std::string said; ///< on standard output and error
    nlohmann::json json;
};

#endif
