#ifndef DOCTOR_SERVERS_DAEMONS_H
#define DOCTOR_SERVERS_DAEMONS_H

#include "RealServer.h"
#include "doctor/Examination.h"

#include <string>

/// The base of the tests that run the doctor against a daemon.
class Daemons : public RealServer
{
protected:
    /// About a directory with one file.
    doctor::Question ask()
    {
        keep("weekly/seen.bak", "");
        aimAt("weekly/");
        doctor::Question question;
        question.request = request;
        question.commandUrl = request.remotePath;
        question.clearLogin = true;
        return question;
    }

    /// Another file in that directory.
    void fill(const std::string& name, const std::string& text) const { keep("weekly/" + name, text); }
};

#endif
