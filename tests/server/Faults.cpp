#include "Faults.h"

#include <boost/algorithm/string/predicate.hpp>
#include <boost/lexical_cast.hpp>

#include <map>
#include <stdexcept>

namespace testserver {

namespace {

enum class Argument
{
    None,
    Number,
    Text
};

// Where a misbehaviour has a meaning; values combine.
enum Place : unsigned
{
    kCommand = 1,
    kTls = 2,
    kData = 4,
    kListen = 8
};

struct Form
{
    Misbehaviour misbehaviour;
    Argument argument;
    unsigned places;
};

const std::map<std::string, Form>& forms()
{
    static const std::map<std::string, Form> known = {
        {"reply", {Misbehaviour::Reply, Argument::Text, kCommand}},
        {"last", {Misbehaviour::Last, Argument::Text, kCommand}},
        {"endless", {Misbehaviour::Endless, Argument::Text, kCommand}},
        {"drop", {Misbehaviour::Drop, Argument::None, kCommand}},
        {"reset", {Misbehaviour::Reset, Argument::None, kCommand | kTls}},
        {"stall", {Misbehaviour::Stall, Argument::None, kCommand | kTls | kData}},
        {"delay", {Misbehaviour::Delay, Argument::Number, kCommand}},
        {"split", {Misbehaviour::Split, Argument::None, kCommand}},
        {"pad", {Misbehaviour::Pad, Argument::Number, kCommand}},
        {"append", {Misbehaviour::Append, Argument::Text, kCommand}},
        {"meet", {Misbehaviour::Meet, Argument::Number, kCommand}},
        {"plain", {Misbehaviour::Plain, Argument::None, kTls | kData}},
        {"garbage", {Misbehaviour::Garbage, Argument::None, kTls | kData}},
        {"close", {Misbehaviour::Close, Argument::None, kTls | kData}},
        {"drop-after", {Misbehaviour::DropAfter, Argument::Number, kData}},
        {"reset-after", {Misbehaviour::ResetAfter, Argument::Number, kData}},
        {"claim-after", {Misbehaviour::ClaimAfter, Argument::Number, kData}},
        {"stall-after", {Misbehaviour::StallAfter, Argument::Number, kData}},
        {"slow", {Misbehaviour::Slow, Argument::Number, kData}},
        {"no-close-notify", {Misbehaviour::NoCloseNotify, Argument::None, kData}},
        {"refuse", {Misbehaviour::Refuse, Argument::None, kListen}},
    };
    return known;
}

Place placeOf(const std::string& command)
{
    if (boost::algorithm::iequals(command, "TLS")) {
        return kTls;
    }
    if (boost::algorithm::iequals(command, "DATA")) {
        return kData;
    }
    return boost::algorithm::iequals(command, "LISTEN") ? kListen : kCommand;
}

[[noreturn]] void refuse(const std::string& text, const std::string& why)
{
    throw std::invalid_argument("fault \"" + text + "\": " + why +
                                "; the form is [SESSION/]COMMAND[#OCCURRENCE]=MISBEHAVIOUR[:ARGUMENT]");
}

template <typename Number>
Number parseNumber(const std::string& digits, const std::string& whole)
{
    if (digits.empty() || digits.find_first_not_of("0123456789") != std::string::npos) {
        refuse(whole, "\"" + digits + "\" is no number");
    }
    try {
        return boost::lexical_cast<Number>(digits);
    } catch (const boost::bad_lexical_cast&) {
        refuse(whole, "\"" + digits + "\" is too large");
    }
}

char escaped(const std::string& text, std::size_t& position, const std::string& whole)
{
    switch (text[position]) {
    case 'r':
        return '\r';
    case 'n':
        return '\n';
    case '0':
        return '\0';
    case '\\':
        return '\\';
    case 'x': {
        const std::string digits = text.substr(position + 1, 2);
        if (digits.size() != 2 || digits.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos) {
            refuse(whole, "\\x needs two hexadecimal digits");
        }
        position += 2;
        return static_cast<char>(std::stoi(digits, nullptr, 16));
    }
    default:
        refuse(whole, std::string("\\") + text[position] + " stands for nothing");
    }
}

// The bytes that a reply's text stands for.
std::string unescape(const std::string& text, const std::string& whole)
{
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\') {
            bytes += text[i];
        } else if (++i == text.size()) {
            refuse(whole, "a \\ ends it");
        } else if (text[i] == 'c' && i + 1 == text.size()) {
            return bytes;
        } else {
            bytes += escaped(text, i, whole);
        }
    }
    return bytes + "\r\n";
}

// Reads the part before the "=".
void parseWhen(const std::string& when, Fault& fault, const std::string& whole)
{
    fault.command = when;
    const std::size_t slash = fault.command.find('/');
    if (slash != std::string::npos) {
        fault.session = parseNumber<unsigned>(fault.command.substr(0, slash), whole);
        fault.command.erase(0, slash + 1);
    }
    const std::size_t hash = fault.command.find('#');
    if (hash != std::string::npos) {
        fault.occurrence = parseNumber<unsigned>(fault.command.substr(hash + 1), whole);
        fault.command.erase(hash);
    }
    if (fault.command.empty()) {
        refuse(whole, "there is no command");
    }
}

// Reads the part after the "=".
void parseWhat(const std::string& what, Fault& fault, const std::string& whole)
{
    const std::size_t colon = what.find(':');
    const std::string name = what.substr(0, colon);
    const auto found = forms().find(name);
    if (found == forms().end()) {
        refuse(whole, "\"" + name + "\" is no misbehaviour");
    }
    const Form& form = found->second;
    if ((form.places & placeOf(fault.command)) == 0) {
        refuse(whole, "\"" + name + "\" means nothing for " + fault.command);
    }
    if ((form.argument == Argument::None) != (colon == std::string::npos)) {
        refuse(whole, form.argument == Argument::None ? "it takes no argument" : "an argument is missing");
    }
    fault.misbehaviour = form.misbehaviour;
    if (form.argument == Argument::Number) {
        fault.number = parseNumber<std::uint64_t>(what.substr(colon + 1), whole);
    } else if (form.argument == Argument::Text) {
        fault.text = unescape(what.substr(colon + 1), whole);
    }
}

} // namespace

Fault parseFault(const std::string& text)
{
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos) {
        refuse(text, "there is no =");
    }
    Fault fault;
    parseWhen(text.substr(0, equals), fault, text);
    parseWhat(text.substr(equals + 1), fault, text);
    return fault;
}

FaultPlan::FaultPlan(const std::vector<Fault>& faults, unsigned session)
{
    for (const Fault& fault : faults) {
        if (fault.session == 0 || fault.session == session) {
            m_entries.push_back({fault});
        }
    }
}

const Fault* FaultPlan::next(const std::string& command)
{
    const Fault* found = nullptr;
    for (Entry& entry : m_entries) {
        if (!boost::algorithm::iequals(entry.fault.command, command)) {
            continue;
        }
        ++entry.seen;
        if (found == nullptr && (entry.fault.occurrence == 0 || entry.fault.occurrence == entry.seen)) {
            found = &entry.fault;
        }
    }
    return found;
}

} // namespace testserver
