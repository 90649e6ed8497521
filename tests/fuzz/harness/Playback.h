#ifndef FUZZ_HARNESS_PLAYBACK_H
#define FUZZ_HARNESS_PLAYBACK_H

#include "harness/GoodServer.h"
#include "harness/Network.h"
#include "harness/Script.h"
#include "harness/Wire.h"

#include <TlsContexts.h>

#include <cstddef>
#include <cstdint>
#include <list>
#include <string>
#include <utility>

/// A server that does what a script says, whatever the client sends: on each control connection from the script's
/// beginning.
class Playback : public Peer
{
public:
    /// REQUIRES: `tls` outlives the object.
    Playback(const std::string& script, const testserver::TlsContexts& tls);

    bool accept(std::uint16_t port, int descriptor, NetworkTime now) override;
    void act(NetworkTime now) override;
    NetworkTime nextAct() const override;

private:
    struct Control
    {
        explicit Control(int descriptor, NetworkTime now) : wire(descriptor), next(now) {}

        Wire wire;
        NetworkTime next; // when the silence has lasted long enough
        std::size_t replies = 0;
        GoodServer good = {};
        bool isDeaf = false;    // until it closes
        bool isWaiting = false; // for something to reply to
    };
    struct Data
    {
        Data(int descriptor, NetworkTime giveUp, std::string text)
            : wire(descriptor), next(giveUp), content(std::move(text))
        {
        }

        Wire wire;
        NetworkTime next;
        std::string content;
        bool isSent = false;
    };

    // These return whether the connection stays open.
    bool act(Control& control, NetworkTime now) const;
    bool act(Data& data, NetworkTime now);
    bool say(Control& control, NetworkTime now) const;
    bool sayGood(Control& control, NetworkTime now) const;

    const Script m_script;
    const testserver::TlsContexts& m_tls;
    std::list<Control> m_controls;
    std::list<Data> m_datas;
    std::size_t m_dataConnections = 0;
    std::size_t m_fileSize; // what the last data connection has brought, or else sends
    bool m_hasReceived = false;
};

#endif
