#include "Faults.h"

#include <boost/algorithm/string/predicate.hpp>
#include <boost/lexical_cast.hpp>

#include <map>
#include <stdexcept>

namespace testserver {

namespace {

struct Form
{
    Misbehaviour misbehaviour;
    enum
    {
        None,
        Number,
        Text
    } argument;
};

const std::map<std::string, Form>& forms()
{
    static const std::map<std::string, Form> known = {
        {"reply", {Misbehaviour::Reply, Form::Text}},
        {"drop", {Misbehaviour::Drop, Form::None}},
        {"reset", {Misbehaviour::Reset, Form::None}},
        {"stall", {Misbehaviour::Stall, Form::None}},
        {"delay", {Misbehaviour::Delay, Form::Number}},
        {"split", {Misbehaviour::Split, Form::None}},
        {"pad", {Misbehaviour::Pad, Form::Number}},
        {"drop-after", {Misbehaviour::DropAfter, Form::Number}},
        {"reset-after", {Misbehaviour::ResetAfter, Form::Number}},
        {"claim-after", {Misbehaviour::ClaimAfter, Form::Number}},
        {"stall-after", {Misbehaviour::StallAfter, Form::Number}},
        {"slow", {Misbehaviour::Slow, Form::Number}},
        {"plain", {Misbehaviour::Plain, Form::None}},
        {"garbage", {Misbehaviour::Garbage, Form::None}},
        {"close", {Misbehaviour::Close, Form::None}},
        {"refuse", {Misbehaviour::Refuse, Form::None}},
        {"no-close-notify", {Misbehaviour::NoCloseNotify, Form::None}},
    };
    return known;
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

} // namespace

Fault parseFault(const std::string& text)
{
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos) {
        refuse(text, "there is no =");
    }
    Fault fault;
    fault.command = text.substr(0, equals);
    const std::size_t slash = fault.command.find('/');
    if (slash != std::string::npos) {
        fault.session = parseNumber<unsigned>(fault.command.substr(0, slash), text);
        fault.command.erase(0, slash + 1);
    }
    const std::size_t hash = fault.command.find('#');
    if (hash != std::string::npos) {
        fault.occurrence = parseNumber<unsigned>(fault.command.substr(hash + 1), text);
        fault.command.erase(hash);
    }
    if (fault.command.empty()) {
        refuse(text, "there is no command");
    }

    const std::size_t colon = text.find(':', equals);
    const std::string name = text.substr(equals + 1, colon == std::string::npos ? colon : colon - equals - 1);
    const auto form = forms().find(name);
    if (form == forms().end()) {
        refuse(text, "\"" + name + "\" is no misbehaviour");
    }
    if ((form->second.argument == Form::None) != (colon == std::string::npos)) {
        refuse(text, form->second.argument == Form::None ? "it takes no argument" : "an argument is missing");
    }
    fault.misbehaviour = form->second.misbehaviour;
    if (form->second.argument == Form::Number) {
        fault.number = parseNumber<std::uint64_t>(text.substr(colon + 1), text);
    } else if (form->second.argument == Form::Text) {
        fault.text = unescape(text.substr(colon + 1), text);
    }
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
