#ifndef SERVERS_MATRIX_H
#define SERVERS_MATRIX_H

#include "Server.h"

#include <string>
#include <vector>

/// The table in docs/servers.md that tells what works where. Only the table is the test's; the words around it are not.
class Matrix
{
public:
    /// REQUIRES: a document with a table, or with the line "| server |" where it is to begin.
    explicit Matrix(std::string document);

    static std::string row(const Server& server, const Six<int>& codes);

    /// The row with this server's title, or nothing.
    std::string rowOf(const Server& server) const;

    /// The titles of the rows, from above.
    std::vector<std::string> titles() const;

    /// Puts the row in its place among the servers' rows, and throws out those of no server.
    void put(const Server& server, const std::string& row);

    void write() const;

private:
    std::string m_document;
    std::string m_before;
    std::vector<std::string> m_rows;
    std::string m_after;
};

#endif
