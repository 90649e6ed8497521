#ifndef DOCTOR_HARNESS_DOCTORPROCESS_H
#define DOCTOR_HARNESS_DOCTORPROCESS_H

#include "support/Process.h"
#include "support/TemporaryFolder.h"

#include <string>

/// "sftpclient doctor", run as a process. A running one is ended with the object.
class DoctorProcess
{
public:
    /// `password` goes into its environment, and so do `variables`; `ignored` is a signal that it ignores;
    /// `out` is its standard output, if not a file that `out()` reads.
    DoctorProcess(const Words& arguments, const std::string& password, const Variables& variables = {}, int ignored = 0,
                  const std::string& out = {});

    void signal(int number) const { m_process.signal(number); }

    /// The process that it has forked. Throws if there is none.
    pid_t child() const;

    /// Waits for it to end and returns its exit status, or minus the signal that ended it.
    int wait() { return m_process.wait(); }

    std::string out() const { return contentOf(m_out.path()); }
    std::string err() const { return contentOf(m_err.path()); }

private:
    ProcessSetup setupOf(const Words& arguments, const std::string& password, const Variables& variables, int ignored,
                         const std::string& out) const;

    TextFile m_out;
    TextFile m_err;
    Process m_process;
};

#endif
