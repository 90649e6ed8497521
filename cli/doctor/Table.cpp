#include "doctor/Renderers.h"

#include <EscapeControlBytes.h>

#include <algorithm>
#include <array>
#include <ostream>

namespace doctor {

namespace {

struct Mark
{
    const char* text;
    const char* colour;
};

constexpr char kGreen[] = "\x1b[32m";
constexpr char kYellow[] = "\x1b[33m";
constexpr char kRed[] = "\x1b[31m";

// Each in the order of its kind.
constexpr std::array<Mark, 4> kGrades = {{{"ok", kGreen}, {"warn", kYellow}, {"fail", kRed}, {"-", ""}}};
constexpr std::array<Mark, 3> kOutlooks = {{{"works", kGreen}, {"will fail", kRed}, {"unknown", kYellow}}};

Mark markOf(Grade grade) { return kGrades.at(static_cast<std::size_t>(grade)); }
Mark markOf(Outlook outlook) { return kOutlooks.at(static_cast<std::size_t>(outlook)); }

std::string padded(std::string text, std::size_t width)
{
    text.resize(std::max(text.size(), width), ' ');
    return text;
}

std::string coloured(const std::string& text, const Mark& mark, bool inColour)
{
    return inColour && *mark.colour != '\0' ? mark.colour + text + "\x1b[0m" : text;
}

void renderFindings(const std::vector<Finding>& findings, bool inColour, std::ostream& out)
{
    constexpr std::size_t kGrade = 4;
    std::size_t width = 0;
    for (const Finding& each : findings) {
        width = std::max(width, each.probe.size());
    }
    for (const Finding& each : findings) {
        const Mark mark = markOf(each.grade);
        out << "  " << padded(each.probe, width) << "  " << coloured(padded(mark.text, kGrade), mark, inColour) << "  "
            << escapeControlBytes(each.seen) << '\n';
    }
}

std::string textOf(const Expectation& expected)
{
    const bool tells = expected.outlook == Outlook::Fails && expected.code;
    return markOf(expected.outlook).text + (tells ? " with " + std::to_string(*expected.code) : "");
}

void renderPredictions(const std::vector<Prediction>& predictions, bool inColour, std::ostream& out)
{
    constexpr std::size_t kOperation = 8;
    constexpr std::size_t kOutlook = 17;
    out << "  " << padded("", kOperation) << "  " << padded("SFtpClient", kOutlook) << "  SFtpSession\n";
    for (const Prediction& each : predictions) {
        out << "  " << padded(each.operation, kOperation) << "  "
            << coloured(padded(textOf(each), kOutlook), markOf(each.outlook), inColour) << "  "
            << coloured(textOf(each.session), markOf(each.session.outlook), inColour) << '\n';
    }
}

struct Note
{
    std::string text;
    std::string operations;
    std::size_t count = 1;
};

// Operations that have a reason or a remedy in common share its lines.
template <typename Select>
std::vector<Note> notesOn(const std::vector<Prediction>& predictions, Select select)
{
    std::vector<Note> notes;
    for (const Prediction& each : predictions) {
        const std::string text = select(each);
        const auto same =
            std::find_if(notes.begin(), notes.end(), [&text](const Note& note) { return note.text == text; });
        if (same != notes.end()) {
            same->operations += ", " + each.operation;
            ++same->count;
        } else if (!text.empty()) {
            notes.push_back({text, each.operation});
        }
    }
    for (Note& each : notes) {
        each.operations = each.count == predictions.size() ? "all" : each.operations;
    }
    return notes;
}

bool isAmong(const std::vector<Note>& notes, const Note& note)
{
    return std::any_of(notes.begin(), notes.end(), [&note](const Note& each) {
        return each.text == note.text && each.operations == note.operations;
    });
}

void renderNotes(const char* title, const std::vector<Note>& ofClient, const std::vector<Note>& ofSession,
                 std::ostream& out)
{
    if (ofClient.empty() && ofSession.empty()) {
        return;
    }
    out << '\n' << title << ":\n";
    const auto render = [&out](const std::string& who, const Note& note) {
        out << "  " << who << ", " << note.operations << ":\n    " << escapeControlBytes(note.text) << '\n';
    };
    for (const Note& each : ofClient) {
        render(isAmong(ofSession, each) ? "both" : "SFtpClient", each);
    }
    for (const Note& each : ofSession) {
        if (!isAmong(ofClient, each)) {
            render("SFtpSession", each);
        }
    }
}

} // namespace

void renderTable(const Report& report, const std::vector<Prediction>& predictions, bool inColour, std::ostream& out)
{
    out << escapeControlBytes(report.url) << ":\n";
    renderFindings(findingsOf(report), inColour, out);
    out << "\nThe operations:\n";
    renderPredictions(predictions, inColour, out);
    renderNotes("Why", notesOn(predictions, [](const Prediction& each) { return each.reason; }),
                notesOn(predictions, [](const Prediction& each) { return each.session.reason; }), out);
    renderNotes("What to change", notesOn(predictions, [](const Prediction& each) { return each.remedy; }),
                notesOn(predictions, [](const Prediction& each) { return each.session.remedy; }), out);
}

} // namespace doctor
