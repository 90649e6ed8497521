#ifndef DOCTOR_HARNESS_EXAMINED_H
#define DOCTOR_HARNESS_EXAMINED_H

#include "doctor/Examination.h"
#include "doctor/Predictions.h"
#include "support/Live.h"

#include <string>
#include <vector>

/// The base of the tests that run the doctor against a server: a test server on demand, and a question about it.
class Examined : public Live
{
protected:
    /// Starts the server and asks about this directory of it. The URL's scheme matches the server's TLS mode.
    void serveAndAsk(const std::string& directory = "/");

    /// Asks about a directory of the server that the request is aimed at.
    void askAbout(const std::string& url);

    doctor::Question question;
};

/// The six outlooks in the order of the predictions: W for works, F for fails, ? for unknown.
std::string outlooksOf(const std::vector<doctor::Prediction>& predictions);

#endif
