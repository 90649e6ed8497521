#include "harness/DoctorProcess.h"

#include <stdexcept>

DoctorProcess::DoctorProcess(const Words& arguments, const std::string& password, const Variables& variables,
                             int ignored, const std::string& out)
    : m_process(setupOf(arguments, password, variables, ignored, out))
{
}

ProcessSetup DoctorProcess::setupOf(const Words& arguments, const std::string& password, const Variables& variables,
                                    int ignored, const std::string& out) const
{
    ProcessSetup setup;
    setup.words = {SFTPCLIENT_COMMAND, "doctor"};
    setup.words.insert(setup.words.end(), arguments.begin(), arguments.end());
    // Leak detection must not report the lists that rename and delete leave behind.
    setup.environment = {{"SFTPCLIENT_PASSWORD", password}, {"LD_PRELOAD", SFTPCLIENT_KEPT_LISTS}};
    setup.environment.insert(setup.environment.end(), variables.begin(), variables.end());
    setup.out = out.empty() ? m_out.path() : out;
    setup.err = m_err.path();
    setup.ignored = ignored;
    return setup;
}

pid_t DoctorProcess::child() const
{
    const std::string id = std::to_string(m_process.id());
    const std::string children = contentOf("/proc/" + id + "/task/" + id + "/children");
    if (children.empty()) {
        throw std::runtime_error("there is no child");
    }
    return std::stoi(children);
}
