#include "Arguments.h"

#include <CLI/CLI.hpp>

#include <memory>

namespace {

constexpr char kDescription[] = "Runs one operation of libSFtpClient against a remote file server.\n"
                                "\"sftpclient get --help\" tells what get takes, and so on.";

constexpr char kFooter[] =
    "\n--ca names a file with one CA certificate, PEM or DER, that is trusted besides the machine's own. With\n"
    "none the server is not verified, if the configuration has CertAuthSwitch=0 in section General; else\n"
    "the result is 77. For ftp: and ftps: URLs one of the two must be given, except for put, which goes by\n"
    "the machine's own certificates alone. A file named none is ./none.\n"
    "\n"
    "The password comes from --password-file, else from the environment variable SFTPCLIENT_PASSWORD,\n"
    "else from a prompt at the terminal; never from the command line.\n"
    "\n"
    "Result: one line \"OPERATION: CODE TEXT\", for example \"get: 0 No error\" or \"get: 67 Login denied\".\n"
    "CODE is libcurl's, or -1 where the library could not run the operation; the log records say why.\n"
    "The line goes to standard output, for ls without LOCAL to standard error. Log records go to\n"
    "standard error.\n"
    "\n"
    "Exit status: 0 for result 0, libcurl's code for any other, 255 for -1 and for a failure of the\n"
    "command itself, 2 for wrong usage.\n";

// Help shows a check next to the option's type, which says as much.
CLI::Validator withoutMention(CLI::Validator check) { return check.description(""); }

// One subcommand with the options that all of them share.
class Form
{
public:
    Form(CLI::App& app, Operation operation, const std::string& name, const std::string& description,
         Arguments& arguments)
        : m_form(app.add_subcommand(name, description)), m_arguments(arguments)
    {
        m_form->footer(kFooter);
        m_form->callback([operation, name, &arguments] {
            arguments.operation = operation;
            arguments.name = name;
        });
        addOptions();
    }

    Form& url(const std::string& what)
    {
        m_form->add_option("URL", m_arguments.url, what)->required();
        return *this;
    }
    Form& text(const std::string& name, std::string& value, const std::string& what)
    {
        m_form->add_option(name, value, what)->required();
        return *this;
    }
    Form& optionalText(const std::string& name, std::string& value, const std::string& what)
    {
        m_form->add_option(name, value, what);
        return *this;
    }

private:
    void addOptions()
    {
        m_form->add_option("--user", m_arguments.user, "Name to log in with")->required()->type_name("NAME");
        m_form->add_option("--password-file", m_arguments.passwordFile, "File whose first line is the password")
            ->check(withoutMention(CLI::ExistingFile))
            ->type_name("FILE");
        m_form->add_option("--ca", m_arguments.ca, "CA certificate of the server, or none (see below)")
            ->type_name("FILE|none");
        m_form
            ->add_option("--port", m_arguments.port,
                         "1 to 65535, if it is not the URL's, or else 21, ftps 990, sftp 22")
            ->check(withoutMention(CLI::Range(1, 65535)))
            ->type_name("PORT");
        m_form->add_option("--config", m_arguments.configFile, "INI file of the host's configuration")
            ->check(withoutMention(CLI::ExistingFile))
            ->type_name("FILE");
        m_form->add_flag("--quiet", m_arguments.quiet, "Log failures only");
    }

    CLI::App* m_form;
    Arguments& m_arguments;
};

void addForms(CLI::App& app, Arguments& arguments)
{
    Form(app, Operation::Test, "test", "Test whether the server can be reached and logged in to", arguments)
        .url("What to visit: a directory, ending in \"/\", is best");
    Form(app, Operation::List, "ls", "List the names in a directory", arguments)
        .url("The directory, ending in \"/\"")
        .optionalText("LOCAL", arguments.local, "File to write; without it the listing goes to standard output");
    Form(app, Operation::Get, "get", "Fetch a file", arguments)
        .url("The file")
        .text("LOCAL", arguments.local, "File to write");
    Form(app, Operation::Put, "put", "Send a file", arguments)
        .text("LOCAL", arguments.local, "File to send")
        .url("The file to write; missing directories are created");
    Form(app, Operation::Move, "mv", "Rename a file within a directory", arguments)
        .url("The directory")
        .text("OLD", arguments.remoteName, "The file's name")
        .text("NEW", arguments.newName, "Its new name");
    Form(app, Operation::Remove, "rm", "Delete a file", arguments)
        .url("The directory")
        .text("NAME", arguments.remoteName, "The file's name");
}

} // namespace

std::optional<Arguments> parseArguments(int argc, const char* const* argv, int& status)
{
    Arguments arguments;
    CLI::App app(kDescription, "sftpclient");
    app.footer(kFooter);
    app.require_subcommand(0, 1);
    app.failure_message([](const CLI::App*, const CLI::Error& error) {
        return std::string("sftpclient: ") + error.what() + "\nRun sftpclient --help for the usage.\n";
    });
    addForms(app, arguments);
    try {
        app.parse(argc, argv);
        if (app.get_subcommands().empty()) {
            throw CLI::RequiredError("Name an operation: test, ls, get, put, mv or rm", CLI::ExitCodes::RequiredError);
        }
        return arguments;
    } catch (const CLI::ParseError& error) {
        status = app.exit(error) == 0 ? 0 : kWrongUsage;
        return std::nullopt;
    }
}
