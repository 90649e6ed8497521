#ifndef FUZZ_HARNESS_GRAMMAR_H
#define FUZZ_HARNESS_GRAMMAR_H

#include "harness/Dice.h"
#include "harness/Script.h"

#include <string>

/// What servers send: replies of every kind that the protocol and its servers know, right and wrong, and the content of
/// data connections.
namespace grammar {

/// A reply as in a `Script`.
std::string reply(Dice& dice);

/// What goes over a data connection: lines of a listing, or bytes.
std::string content(Dice& dice);

/// A server that is good up to a point, often until the client has logged in, and then does something else.
Script script(Dice& dice);

/// Changes one thing: a reply, the order of replies, or a content.
void mutate(Script& script, Dice& dice);

/// The first script's beginning and the second one's end.
Script crossed(const Script& first, const Script& second, Dice& dice);

} // namespace grammar

#endif
