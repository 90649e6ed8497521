#ifndef SUPPORT_LINES_H
#define SUPPORT_LINES_H

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

/// Journals, transcripts and records: text, one line after the other.
using Lines = std::vector<std::string>;

Lines operator+(Lines left, const Lines& right);

/// The lines of a text, without their ends.
Lines linesOf(const std::string& text);

/// The last line of a text, without its end.
std::string lastLine(const std::string& text);

/// The last lines: all of them if there are not that many.
Lines lastOf(const Lines& lines, std::size_t count);

/// For EXPECT_TRUE. A failure shows where the two differ, with three lines around it: expected with "-", actual with
/// "+".
testing::AssertionResult sameLines(const Lines& expected, const Lines& actual);

/// The same for texts, to the byte.
testing::AssertionResult sameText(const std::string& expected, const std::string& actual);

/// For EXPECT_TRUE: the text holds this part. A failure shows the text, line by line.
testing::AssertionResult holds(const std::string& part, const std::string& text);

/// For EXPECT_TRUE: whether this exact line is among them. A failure shows them all.
testing::AssertionResult hasLine(const std::string& line, const Lines& lines);

#endif
