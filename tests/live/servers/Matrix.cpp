#include "Matrix.h"

#include <algorithm>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace {

constexpr const char* kHead = "| server |";

std::string cell(int code) { return code == 0 ? "works" : std::to_string(code); }

std::string titleOf(const std::string& row) { return row.substr(2, row.find(" |", 2) - 2); }

bool isRow(const std::string& line) { return line.compare(0, 2, "| ") == 0; }

} // namespace

Matrix::Matrix(std::string document) : m_document(std::move(document))
{
    std::ifstream file(m_document);
    std::string line;
    bool begun = false;
    bool ended = false;
    while (std::getline(file, line)) {
        if (begun && !ended && isRow(line)) {
            m_rows.push_back(line);
            continue;
        }
        // The line of dashes below the head begins with "|-" and is no row.
        ended = ended || (begun && line.empty());
        begun = begun || line.compare(0, std::char_traits<char>::length(kHead), kHead) == 0;
        (ended ? m_after : m_before) += line + "\n";
    }
    if (!begun) {
        throw std::runtime_error(m_document + " has no line that begins with \"" + kHead + "\"; restore it.");
    }
}

std::string Matrix::row(const Server& server, const Six<int>& codes)
{
    std::ostringstream text;
    text << "| " << server.title << " | ";
    for (const int code : {codes.test, codes.upload, codes.list, codes.download, codes.rename, codes.remove}) {
        text << cell(code) << " | ";
    }
    text << server.remark << (server.remark.empty() ? "|" : " |");
    return text.str();
}

std::string Matrix::rowOf(const Server& server) const
{
    const auto found = std::find_if(m_rows.begin(), m_rows.end(),
                                    [&](const std::string& row) { return titleOf(row) == server.title; });
    return found == m_rows.end() ? "" : *found;
}

std::vector<std::string> Matrix::titles() const
{
    std::vector<std::string> titles;
    std::transform(m_rows.begin(), m_rows.end(), std::back_inserter(titles), titleOf);
    return titles;
}

void Matrix::put(const Server& server, const std::string& row)
{
    std::vector<std::string> rows;
    for (const Server& each : servers()) {
        const std::string kept = each.title == server.title ? row : rowOf(each);
        if (!kept.empty()) {
            rows.push_back(kept);
        }
    }
    m_rows = rows;
}

void Matrix::write() const
{
    std::ofstream file(m_document);
    file << m_before;
    for (const std::string& row : m_rows) {
        file << row << "\n";
    }
    file << m_after;
}
