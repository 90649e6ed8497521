#ifndef TREE_HARNESS_PUSHPULL_H
#define TREE_HARNESS_PUSHPULL_H

#include "harness/Trees.h"

#include <string>

constexpr std::time_t kTime = 1700000000;

inline void setAll(const std::string& root, std::time_t time)
{
    for (const auto& [path, unused] : timesIn(root)) {
        setModified(root + "/" + path, time);
    }
}

class PushPull : public Trees
{
protected:
    void expectLine(const std::string& expected, const ProgramResult& result)
    {
        EXPECT_EQ(expected, lastLine(result.err)) << result.err;
    }
};

#endif
