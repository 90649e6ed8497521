#ifndef FAULT_HASTENEDCONNECTING_H
#define FAULT_HASTENEDCONNECTING_H

/// As long as one lives, a second of CURLOPT_CONNECTTIMEOUT lasts 50 milliseconds for the thread that made it: a test
/// of the library's 20 seconds takes one. An operation that sets no such time-out is not affected.
class HastenedConnecting
{
public:
    HastenedConnecting();
    ~HastenedConnecting();
    HastenedConnecting(const HastenedConnecting&) = delete;
    HastenedConnecting& operator=(const HastenedConnecting&) = delete;
};

#endif
