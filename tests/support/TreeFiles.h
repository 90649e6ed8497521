#ifndef SUPPORT_TREEFILES_H
#define SUPPORT_TREEFILES_H

#include <gtest/gtest.h>

#include <ctime>
#include <map>
#include <string>

/// What is in a folder, by paths: the content of a file, "-> TARGET" for a link, and "" under "NAME/" for a folder.
using Tree = std::map<std::string, std::string>;

Tree treeIn(const std::string& folder);

/// Writes these files and folders.
void plant(const std::string& folder, const Tree& tree);

/// In seconds since 1970.
std::time_t modified(const std::string& path);
void setModified(const std::string& path, std::time_t time);

/// The same for all files of a tree, by their paths.
std::map<std::string, std::time_t> timesIn(const std::string& folder);

/// For EXPECT_TRUE: the same paths with the same contents. A failure names those that differ.
testing::AssertionResult sameTrees(const Tree& expected, const Tree& actual);

#endif
