#ifndef SFTPCLIENT_CLI_USAGE_HELPTEXTS_H
#define SFTPCLIENT_CLI_USAGE_HELPTEXTS_H

#include "usage/Commands.h"

#include <string>

/// What the help of the whole command says after its options.
std::string generalNotes();

/// What the help of one operation says after its options.
std::string notesOf(const Command& command);

/// The command's version, and those of the libraries that carry its connections, one a line.
std::string versionText();

#endif
