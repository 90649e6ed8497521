#ifndef SFTPCLIENT_CLI_TREE_RUNTREE_H
#define SFTPCLIENT_CLI_TREE_RUNTREE_H

#include "base/Arguments.h"

/// Runs push or pull and tells how it went; the exit status. Throws `UsageError`.
int runTree(const Arguments& given);

#endif
