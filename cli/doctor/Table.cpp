#include "doctor/Renderers.h"

#include <EscapeControlBytes.h>

#include <algorithm>
#include <ostream>

namespace doctor {

namespace {

struct Mark
{
    const char* text;
    const char* colour;
};

Mark markOf(Grade grade)
{
    switch (grade) {
    case Grade::Ok:
        return {"ok", "\x1b[32m"};
    case Grade::Warn:
        return {"warn", "\x1b[33m"};
    case Grade::Fail:
        return {"fail", "\x1b[31m"};
    default:
        return {"-", ""};
    }
}

Mark markOf(Outlook outlook)
{
    switch (outlook) {
    case Outlook::Works:
        return {"works", "\x1b[32m"};
    case Outlook::Fails:
        return {"will fail", "\x1b[31m"};
    default:
        return {"unknown", "\x1b[33m"};
    }
}

/// Writes rows of a name, a mark and a text, the first two in columns.
class Rows
{
public:
    Rows(std::ostream& out, bool inColour, std::size_t nameWidth, std::size_t markWidth)
        : m_out(out), m_inColour(inColour), m_nameWidth(nameWidth), m_markWidth(markWidth)
    {
    }

    void add(const std::string& name, const Mark& mark, const std::string& text)
    {
        const bool coloured = m_inColour && *mark.colour != '\0';
        m_out << "  " << padded(name, m_nameWidth) << "  " << (coloured ? mark.colour : "")
              << (text.empty() ? mark.text : padded(mark.text, m_markWidth)) << (coloured ? "\x1b[0m" : "");
        if (!text.empty()) {
            m_out << "  " << escapeControlBytes(text);
        }
        m_out << '\n';
    }

private:
    static std::string padded(std::string text, std::size_t width)
    {
        text.resize(std::max(text.size(), width), ' ');
        return text;
    }

    std::ostream& m_out;
    bool m_inColour;
    std::size_t m_nameWidth;
    std::size_t m_markWidth;
};

void renderFindings(const std::vector<Finding>& findings, bool inColour, std::ostream& out)
{
    std::size_t width = 0;
    for (const Finding& each : findings) {
        width = std::max(width, each.probe.size());
    }
    Rows rows(out, inColour, width, 4);
    for (const Finding& each : findings) {
        rows.add(each.probe, markOf(each.grade), each.seen);
    }
}

std::string codeText(const Prediction& prediction)
{
    const bool tells = prediction.outlook == Outlook::Fails && prediction.code;
    return tells ? " with " + std::to_string(*prediction.code) : "";
}

void renderPredictions(const std::vector<Prediction>& predictions, bool inColour, std::ostream& out)
{
    Rows rows(out, inColour, 8, 17);
    for (const Prediction& each : predictions) {
        const Mark mark = markOf(each.outlook);
        const std::string text = mark.text + codeText(each);
        rows.add(each.operation, {text.c_str(), mark.colour}, each.reason);
    }
}

// Operations that fail for one reason share one remedy.
void renderRemedies(const std::vector<Prediction>& predictions, std::ostream& out)
{
    std::vector<std::string> remedies;
    for (const Prediction& each : predictions) {
        if (!each.remedy.empty() && std::find(remedies.begin(), remedies.end(), each.remedy) == remedies.end()) {
            remedies.push_back(each.remedy);
        }
    }
    if (remedies.empty()) {
        return;
    }
    out << "\nWhat to change:\n";
    for (const std::string& remedy : remedies) {
        std::string operations;
        for (const Prediction& each : predictions) {
            operations += each.remedy == remedy ? (operations.empty() ? "" : ", ") + each.operation : "";
        }
        out << "  " << operations << ":\n    " << escapeControlBytes(remedy) << '\n';
    }
}

} // namespace

void renderTable(const Report& report, const std::vector<Prediction>& predictions, bool inColour, std::ostream& out)
{
    out << escapeControlBytes(report.url) << ":\n";
    renderFindings(findingsOf(report), inColour, out);
    out << "\nThe library's operations:\n";
    renderPredictions(predictions, inColour, out);
    renderRemedies(predictions, out);
}

} // namespace doctor
