#include "usage/CommandLine.h"

#include "base/UsageError.h"
#include "usage/Commands.h"
#include "usage/HelpTexts.h"
#include "usage/Options.h"
#include "usage/Settings.h"
#include "usage/Suggest.h"

#include <EscapeControlBytes.h>

#include <CLI/CLI.hpp>
#include <boost/algorithm/string/join.hpp>

#include <algorithm>
#include <iostream>
#include <stdexcept>
#include <vector>

namespace {

constexpr char kDescription[] = "Runs one operation against a file server, over FTP with TLS or over SFTP.";

constexpr char kEndOfOptions[] = "--";

// The command line's grammar, made from the tables of operations and options.
class Grammar
{
public:
    /// `first`: the command line's first word. Where it names an operation, or asks for help or the version, the other
    /// operations get no options: to add them all is a quarter of the time that the command takes to start.
    Grammar(Arguments& arguments, const std::string& first) : m_app(kDescription, "sftpclient")
    {
        m_app.footer(generalNotes());
        m_app.set_help_flag("-h,--help", "Print this help");
        m_app.set_version_flag("--version", versionText(), "Print the versions of the command and its libraries");
        m_app.get_formatter()->label("SUBCOMMAND", "OPERATION");
        m_app.require_subcommand(0, 1);
        const bool isKnown = isOperation(first) || first == "--help" || first == "-h" || first == "--version";
        for (const Command& command : commands()) {
            addForm(command, arguments, !isKnown || first == command.name);
        }
    }

    CLI::App& app() { return m_app; }

    TypedOptions typed() const
    {
        TypedOptions typed;
        for (const auto& option : m_options) {
            if (option.second->count() > 0) {
                const std::vector<std::string>& results = option.second->results();
                typed[option.first->name] = option.first->repeats ? boost::join(results, "\n") : results.back();
            }
        }
        return typed;
    }

private:
    static bool isOperation(const std::string& word)
    {
        return std::any_of(commands().begin(), commands().end(),
                           [&word](const Command& command) { return word == command.name; });
    }

    void addForm(const Command& command, Arguments& arguments, bool isWhole)
    {
        CLI::App* const form = m_app.add_subcommand(command.name, command.description);
        form->group("Operations");
        form->set_help_flag("-h,--help", "Print this help");
        form->footer(notesOf(command));
        form->callback([&command, &arguments] {
            arguments.operation = command.operation;
            arguments.name = command.name;
        });
        if (!isWhole) {
            return;
        }
        for (const Positional& word : command.positionals) {
            form->add_option(word.name, arguments.*word.value, word.description)
                ->required(word.required)
                ->type_name("");
        }
        for (const Option& option : options()) {
            if (belongsTo(option, command.operation)) {
                addOption(*form, option);
            }
        }
    }

    void addOption(CLI::App& form, const Option& option)
    {
        const bool isSwitch = *option.value == '\0';
        const std::string names = (*option.brief == '\0' ? "" : option.brief + std::string(",")) + option.name;
        CLI::Option* const added = isSwitch ? form.add_flag(names, option.description)
                                            : form.add_option(names, option.description)->type_name(option.value);
        // So that a script's options can be overruled by its caller's.
        added->multi_option_policy(option.repeats ? CLI::MultiOptionPolicy::TakeAll : CLI::MultiOptionPolicy::TakeLast);
        added->allow_extra_args(false);
        m_options.emplace_back(&option, added);
    }

    CLI::App m_app;
    std::vector<std::pair<const Option*, CLI::Option*>> m_options;
};

std::vector<std::string> operationNames()
{
    std::vector<std::string> names;
    for (const Command& command : commands()) {
        names.emplace_back(command.name);
    }
    return names;
}

// "get, put or ls".
std::string list(const std::vector<std::string>& names)
{
    const std::vector<std::string> allButTheLast(names.begin(), names.end() - 1);
    return boost::join(allButTheLast, ", ") + " or " + names.back();
}

std::vector<std::string> optionNames(const CLI::App& form)
{
    std::vector<std::string> names;
    for (const CLI::Option* const option : form.get_options()) {
        for (const std::string& name : option->get_lnames()) {
            names.push_back("--" + name);
        }
    }
    return names;
}

// The option's name alone: what follows it may be meant as a password.
std::string nameIn(const std::string& word)
{
    const bool isLong = word.compare(0, 2, "--") == 0;
    return escapeControlBytes(isLong ? word.substr(0, word.find('=')) : word.substr(0, 2));
}

std::string complaintAboutOption(const std::string& word, const CLI::App& app)
{
    const std::vector<CLI::App*> forms = app.get_subcommands();
    const std::string name = nameIn(word);
    const std::vector<std::string> names = optionNames(forms.empty() ? app : *forms.front());
    if (!forms.empty() && std::find(names.begin(), names.end(), name) != names.end()) {
        return "The option " + name + " belongs to the operation: write it after " + forms.front()->get_name() + ".";
    }
    return "There is no option " + name + suggestionFor(name, names);
}

std::string complaintAboutWord(const std::string& word, const CLI::App& app)
{
    const std::vector<CLI::App*> forms = app.get_subcommands();
    const std::string shown = escapeControlBytes(word);
    return forms.empty() ? "There is no operation " + shown + suggestionFor(word, operationNames())
                         : shown + " is one word too many for " + forms.front()->get_name() + ".";
}

// An unknown word explains more than what is missing because of it, and an unknown option more than its value.
std::string complaintOf(const CLI::ParseError& error, const CLI::App& app)
{
    const std::vector<std::string> unknown = app.remaining(true);
    const auto end = std::find(unknown.begin(), unknown.end(), kEndOfOptions);
    const auto option = std::find_if(unknown.begin(), end,
                                     [](const std::string& word) { return word.size() > 1 && word.front() == '-'; });
    if (option != end) {
        return complaintAboutOption(*option, app);
    }
    const auto word =
        std::find_if(unknown.begin(), unknown.end(), [](const std::string& each) { return each != kEndOfOptions; });
    return word == unknown.end() ? std::string(error.what()) + "." : complaintAboutWord(*word, app);
}

std::string helpFor(const CLI::App& app)
{
    const std::vector<CLI::App*> forms = app.get_subcommands();
    return "sftpclient " + (forms.empty() ? "" : forms.front()->get_name() + " ") + "--help";
}

int explain(const CLI::ParseError& error, const CLI::App& app)
{
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
        const int status = app.exit(error);
        if (!std::cout.flush()) {
            throw std::runtime_error("standard output cannot be written");
        }
        return status;
    }
    std::cerr << "sftpclient: " << complaintOf(error, app) << "\nRun " << helpFor(app) << " for the usage.\n";
    return kWrongUsage;
}

// CLI11 would set a switch, and give another option the next word.
void refuseMissingValues(int argc, const char* const* argv)
{
    for (int i = 1; i < argc && std::string(argv[i]) != kEndOfOptions; ++i) {
        const std::string word = argv[i];
        for (const Option& option : options()) {
            if (word == option.name + std::string("=")) {
                throw UsageError(word + " lacks its value: write it behind the sign, or leave the option out.");
            }
        }
    }
}

// What the URL says belongs to the command line, and so goes before the environment and the configuration file.
void addUrl(const RemoteUrl& url, TypedOptions& typed)
{
    if (!url.user().empty()) {
        const auto user = typed.emplace("--user", url.user()).first;
        if (user->second != url.user()) {
            throw UsageError("URL and --user name different users: give one of them.");
        }
    }
    if (url.ownPort() != 0) {
        typed.emplace("--port", std::to_string(url.ownPort()));
    }
}

// Whoever can list processes would read it.
void refuseProxyPassword(const TypedOptions& typed)
{
    const auto proxy = typed.find("--proxy");
    const std::string url = proxy == typed.end() ? "" : proxy->second;
    const std::string::size_type scheme = url.find("://");
    const std::string login = url.substr(0, url.rfind('@') + 1);
    if (login.find(':', scheme == std::string::npos ? 0 : scheme + 3) != std::string::npos) {
        throw UsageError("--proxy must not hold a password: leave it out, or write the proxy into SFTPCLIENT_PROXY or "
                         "the configuration file.");
    }
}

// In the environment and in the configuration file they may stand side by side.
void refuseSessionOptionsAsHost(const TypedOptions& typed, const Arguments& arguments)
{
    for (const Option& option : options()) {
        if (arguments.asHost && option.ofSession && typed.count(option.name) > 0) {
            throw UsageError(std::string(option.name) +
                             " has no effect with --as-host: SFtpClient knows nothing of it. Leave one of them out.");
        }
    }
}

} // namespace

std::optional<Arguments> parseArguments(int argc, const char* const* argv, int& status)
{
    refuseMissingValues(argc, argv);
    Arguments arguments;
    Grammar grammar(arguments, argc > 1 ? argv[1] : "--help");
    try {
        grammar.app().parse(argc, argv);
        if (grammar.app().get_subcommands().empty()) {
            throw CLI::RequiredError("Name an operation: " + list(operationNames()), CLI::ExitCodes::RequiredError);
        }
    } catch (const CLI::ParseError& error) {
        status = explain(error, grammar.app());
        return std::nullopt;
    }
    TypedOptions typed = grammar.typed();
    arguments.remote = RemoteUrl(arguments.url);
    addUrl(arguments.remote, typed);
    refuseProxyPassword(typed);
    applySettings(typed, arguments);
    refuseSessionOptionsAsHost(typed, arguments);
    return arguments;
}
