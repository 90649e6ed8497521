#ifndef NETWORK_ADDRESSES_H
#define NETWORK_ADDRESSES_H

#include "harness/DeadAddress.h"

#include "support/Live.h"

#include <cstdlib>

constexpr const char* kIpv4 = "127.0.0.1";
constexpr const char* kIpv6 = "::1";

/// The base of tests that say what they want of a server.
class Addresses : public Live
{
protected:
    Addresses() { trustByDefault(authority.certificatePem()); }

    void misbehave(const std::string& fault) { wanted.faults.push_back(testserver::parseFault(fault)); }

    testserver::ServerConfig wanted;
};

/// The same, and it is to listen on ::1.
class OverIpv6 : public Addresses
{
protected:
    void SetUp() override
    {
        if (std::getenv("SFTPCLIENT_IPV6_OFF") != nullptr) {
            GTEST_SKIP() << "switched off by SFTPCLIENT_IPV6_OFF";
        }
        ASSERT_TRUE(hasIpv6()) << "The loopback interface has no ::1; SFTPCLIENT_IPV6_OFF=1 leaves these tests out.";
        wanted.address = kIpv6;
    }
};

#endif
