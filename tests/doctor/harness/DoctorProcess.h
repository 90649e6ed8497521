#ifndef DOCTOR_HARNESS_DOCTORPROCESS_H
#define DOCTOR_HARNESS_DOCTORPROCESS_H

#include "doctor/LocalFile.h"

#include <sys/types.h>

#include <string>
#include <vector>

/// "sftpclient doctor", run as a process. A running one is ended with the object.
class DoctorProcess
{
public:
    /// `password` goes into its environment, and so do `variables`, each "NAME=VALUE".
    DoctorProcess(const std::vector<std::string>& arguments, const std::string& password,
                  const std::vector<std::string>& variables = {});
    ~DoctorProcess();
    DoctorProcess(const DoctorProcess&) = delete;
    DoctorProcess& operator=(const DoctorProcess&) = delete;

    void signal(int number) const;

    /// The process that it has forked. Throws where there is none.
    pid_t child() const;

    /// Waits for its end and gives its exit status, or minus the signal that ended it.
    int wait();

    std::string out() const { return m_out.content(); }
    std::string err() const { return m_err.content(); }

private:
    doctor::LocalFile m_out;
    doctor::LocalFile m_err;
    pid_t m_process = -1;
};

#endif
