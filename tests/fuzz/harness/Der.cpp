#include "harness/Der.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace der {

namespace {

constexpr unsigned char kConstructed = 0x20;
constexpr unsigned char kOctetString = 0x04;
constexpr int kDeepest = 30;

/// The next value's bytes, and where they end.
class Reader
{
public:
    explicit Reader(const std::string& bytes) : m_bytes(bytes) {}

    bool isAtEnd() const { return m_at == m_bytes.size(); }

    std::optional<std::pair<unsigned char, std::string>> next()
    {
        if (m_bytes.size() - m_at < 2) {
            return std::nullopt;
        }
        const unsigned char tag = byte();
        const std::optional<std::size_t> length = lengthOfContent();
        if ((tag & 0x1fU) == 0x1f || !length || *length > m_bytes.size() - m_at) {
            return std::nullopt;
        }
        m_at += *length;
        return std::pair(tag, m_bytes.substr(m_at - *length, *length));
    }

private:
    unsigned char byte() { return static_cast<unsigned char>(m_bytes[m_at++]); }

    std::optional<std::size_t> lengthOfContent()
    {
        const unsigned char first = byte();
        if (first < 0x80) {
            return first;
        }
        std::size_t left = first & 0x7fU;
        if (left == 0 || left > 3 || left > m_bytes.size() - m_at) {
            return std::nullopt;
        }
        std::size_t length = 0;
        for (; left > 0; --left) {
            length = length << 8U | byte();
        }
        return length;
    }

    const std::string& m_bytes;
    std::size_t m_at = 0;
};

std::optional<std::vector<Value>> parse(const std::string& bytes, int depth)
{
    std::vector<Value> values;
    for (Reader reader(bytes); !reader.isAtEnd();) {
        auto next = reader.next();
        if (!next || depth > kDeepest) {
            return std::nullopt;
        }
        Value value{next->first};
        auto parts = (value.tag & kConstructed) != 0 || value.tag == kOctetString ? parse(next->second, depth + 1)
                                                                                  : std::nullopt;
        if (parts) {
            value.parts = std::move(*parts);
        } else {
            value.content = std::move(next->second);
        }
        values.push_back(std::move(value));
    }
    return values;
}

std::string lengthBytes(std::size_t length)
{
    if (length < 0x80) {
        return std::string(1, static_cast<char>(length));
    }
    std::string bytes;
    for (; length > 0; length >>= 8U) {
        bytes.insert(bytes.begin(), static_cast<char>(length & 0xffU));
    }
    return static_cast<char>(0x80U | bytes.size()) + bytes;
}

/// A value with the list that it stands in.
struct Place
{
    std::vector<Value>* list;
    std::size_t index;

    Value& value() const { return (*list)[index]; }
    auto position() const { return list->begin() + static_cast<std::ptrdiff_t>(index); }
};

void addPlaces(std::vector<Value>& list, std::vector<Place>& places)
{
    for (std::size_t i = 0; i < list.size(); ++i) {
        places.push_back({&list, i});
        addPlaces(list[i].parts, places);
    }
}

unsigned char otherTag(Dice& dice)
{
    static const std::vector<unsigned char> tags = {0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x0a, 0x0c,
                                                    0x13, 0x14, 0x16, 0x17, 0x18, 0x1c, 0x1e, 0x30,
                                                    0x31, 0x80, 0x81, 0x82, 0xa0, 0xa1, 0xa3, 0x24};
    return dice.onceIn(6) ? static_cast<unsigned char>(dice.below(256) & 0xdeU) : dice.among(tags);
}

void changeContent(Value& value, Dice& dice)
{
    const std::string other = dice.bytes(dice.below(40));
    std::string& content = value.content;
    switch (content.empty() ? 0 : dice.below(6)) {
    case 0:
        content = other;
        break;
    case 1:
        content.resize(dice.below(content.size()));
        break;
    case 2:
        content.insert(dice.below(content.size() + 1), other);
        break;
    case 3:
        content = std::string(dice.below(300), content.front());
        break;
    default:
        content[dice.below(content.size())] = static_cast<char>(dice.below(256));
    }
    value.parts.clear();
}

} // namespace

std::optional<std::vector<Value>> parse(const std::string& bytes) { return parse(bytes, 0); }

std::string bytesOf(const std::vector<Value>& values)
{
    std::string bytes;
    for (const Value& each : values) {
        const std::string content = each.parts.empty() ? each.content : bytesOf(each.parts);
        bytes += static_cast<char>(each.tag) + lengthBytes(content.size()) + content;
    }
    return bytes;
}

void mutate(std::vector<Value>& values, Dice& dice)
{
    std::vector<Place> places;
    addPlaces(values, places);
    if (places.empty()) {
        values.push_back({otherTag(dice), dice.bytes(dice.below(20))});
        return;
    }
    const Place at = dice.among(places);
    const Value other = dice.among(places).value();
    switch (dice.below(8)) {
    case 0:
        at.value().tag = otherTag(dice);
        break;
    case 1:
        at.list->erase(at.position());
        break;
    case 2:
        at.list->insert(at.position(), other);
        break;
    case 3:
        at.value() = other;
        break;
    case 4: { // one more level
        const Value inner = at.value();
        at.value() = {static_cast<unsigned char>(dice.onceIn(2) ? 0x30 : 0x04), "", {inner}};
        break;
    }
    default:
        changeContent(at.value(), dice);
    }
}

} // namespace der
