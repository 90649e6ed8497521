#ifndef CLI_HARNESS_SERVED_H
#define CLI_HARNESS_SERVED_H

#include "harness/RunCommand.h"

#include "support/ServerFixture.h"

#include <string>
#include <vector>

/// The base of every test that runs the command against a server: folders, a CA, a login, and a server on demand.
class Served : public ServerFixture
{
protected:
    Served();

    /// Starts the server with `config` and these faults.
    void serve(const std::vector<std::string>& faults = {});

    /// "ftp://backup@localhost:PORT", or with ftps: for a server of implicit TLS, and the path.
    std::string url(const std::string& path = "/") const;

    /// The same without the user.
    std::string plainUrl(const std::string& path = "/") const { return ServerFixture::url(path); }

    /// Runs the command in the folder of the local files, with the CA and the password.
    ProgramResult run(Words form, Variables more = {}) const;

    /// The setup for such a run.
    ProcessSetup setupOf(Words form, const Variables& more = {}) const;

    /// `form` with the CA.
    Words withCa(Words form) const;

    /// The CA in place of the machine's trust store, which is also slow to read.
    Variables trust() const;

    /// The same, and the password.
    Variables environment() const;

    std::string ca() const { return folder.file("ca.pem"); }

    /// Whether the commands are run with --as-host.
    bool asHost = false;
};

/// The same for what a host with SFtpClient sees.
class ServedAsHost : public Served
{
protected:
    ServedAsHost() { asHost = true; }
};

#endif
