#include <cstddef>
#include <cstdint>
#include <cstring>

#include "media/embedded/bytes.h"
#include "media/embedded/xmp.h"

// Xmp::add: as much of XML with namespaces as XMP packets have, which are UTF-8 without a document type. A
// web page has a reader of XML already: there web/portrait/reader.cpp has it.

namespace quorvane::media {
namespace {

using namespace std::string_view_literals;

constexpr size_t kMostLevels = 64, kMostNodes = 100'000, kMostNamespace = 256, kMostPrefixes = 256;
constexpr char kXmlNamespace[] = "http://www.w3.org/XML/1998/namespace";
constexpr char kCutOff[] = "it ends within a tag", kMalformed[] = "it is not well-formed XML";

bool isSpace(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

/// Bytes of the UTF-8 character at the beginning of `text`, which is not empty; 0 where there is none that
/// XML may hold.
size_t characterSize(std::string_view text) {
    const auto byte = [&](size_t i) { return static_cast<uint8_t>(text[i]); };
    const uint8_t first = byte(0);
    if (first < 0x80) return first >= ' ' || isSpace(text[0]) ? 1 : 0;
    const size_t size = first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : 2;
    if (first < 0xc2 || first > 0xf4 || text.size() < size) return 0;
    for (size_t i = 1; i < size; ++i)
        if ((byte(i) & 0xc0) != 0x80) return 0;
    // Longer than need be, a half of a pair of UTF-16, or beyond the last one.
    if ((first == 0xe0 && byte(1) < 0xa0) || (first == 0xed && byte(1) > 0x9f) ||
        (first == 0xf0 && byte(1) < 0x90) || (first == 0xf4 && byte(1) > 0x8f))
        return 0;
    return size;
}

std::string utf8(uint32_t code) {
    const auto tail = [&](int shift) { return static_cast<char>(0x80 | (code >> shift & 0x3f)); };
    const auto head = [&](uint32_t mark, int shift) { return static_cast<char>(mark | code >> shift); };
    if (code < 0x80) return {head(0, 0)};
    if (code < 0x800) return {head(0xc0, 6), tail(0)};
    if (code < 0x10000) return {head(0xe0, 12), tail(6), tail(0)};
    return {head(0xf0, 18), tail(12), tail(6), tail(0)};
}

/// The character that `&name;` stands for; "" where it is none.
std::string referenced(std::string_view name) {
    constexpr std::pair<std::string_view, const char*> kNamed[] = {
        {"lt", "<"}, {"gt", ">"}, {"amp", "&"}, {"apos", "'"}, {"quot", "\""}};
    for (const auto& [known, character] : kNamed)
        if (name == known) return character;
    if (name.size() < 2 || name[0] != '#') return {};
    const bool hexadecimal = name[1] == 'x';
    const std::string_view digits = name.substr(hexadecimal ? 2 : 1);
    if (digits.empty()) return {};
    uint32_t code = 0;
    for (const char c : digits) {
        const char lower = static_cast<char>(c | 0x20);
        uint32_t digit = 0;
        if (c >= '0' && c <= '9')
            digit = static_cast<uint32_t>(c - '0');
        else if (hexadecimal && lower >= 'a' && lower <= 'f')
            digit = static_cast<uint32_t>(lower - 'a') + 10;
        else
            return {};
        code = code * (hexadecimal ? 16 : 10) + digit;
        if (code > 0x10ffff) return {};
    }
    const std::string character = utf8(code);
    return characterSize(character) == character.size() ? character : std::string();
}

class Scanner {
  public:
    Scanner(std::string_view packet, std::vector<XmpNode>* nodes)
        : m_rest(packet), m_nodes(*nodes), m_may_take(5 * packet.size() + (size_t{1} << 20)) {}

    /// Why it could not be read, or "".
    const char* run() {
        if (startsWith(m_rest, "\xef\xbb\xbf"sv)) m_rest.remove_prefix(3);
        while (*m_fault == '\0' && !m_rest.empty()) next();
        if (*m_fault == '\0' && !m_open.empty()) m_fault = "it ends within an element";
        if (*m_fault == '\0' && !m_has_root) m_fault = "it has no element";
        for (const Element& element : m_open) m_nodes[element.node].end = m_nodes.size();
        return m_fault;
    }

  private:
    struct Element {
        size_t node;
        size_t prefixes;  ///< how many are known around it
        std::string_view name;
    };
    struct Prefix {
        std::string_view name;  ///< "" for what has none
        std::string ns;
    };
    struct Attribute {
        std::string_view name, value;
    };

    // They return whether all went well, else they have said what did not.

    bool fail(const char* why) {
        m_fault = why;
        return false;
    }

    bool next() {
        if (m_rest[0] != '<') return characters();
        if (startsWith(m_rest, "<?"sv)) return skipBehind("?>"sv);
        if (startsWith(m_rest, "<!--"sv)) return skipBehind("-->"sv);
        if (startsWith(m_rest, "<![CDATA["sv)) return literalCharacters();
        if (startsWith(m_rest, "<!DOCTYPE"sv)) return fail("a document type, which XMP has not");
        if (startsWith(m_rest, "</"sv)) return endTag();
        return startTag();
    }

    bool skipBehind(std::string_view end) {
        const size_t at = m_rest.find(end);
        if (at == std::string_view::npos) return fail(kCutOff);
        m_rest.remove_prefix(at + end.size());
        return true;
    }

    void skipSpace() {
        while (!m_rest.empty() && isSpace(m_rest[0])) m_rest.remove_prefix(1);
    }

    bool skip(char c) {
        if (m_rest.empty()) return fail(kCutOff);
        if (m_rest[0] != c) return fail(kMalformed);
        m_rest.remove_prefix(1);
        return true;
    }

    bool readName(std::string_view* name) {
        const size_t size = m_rest.find_first_of(" \t\r\n/>=<\"'&");
        if (size == std::string_view::npos) return fail(kCutOff);
        *name = m_rest.substr(0, size);
        m_rest.remove_prefix(size);
        if (name->empty() || !isText(*name)) return fail(kMalformed);
        return true;
    }

    static bool isText(std::string_view text) {
        while (!text.empty()) {
            const size_t size = characterSize(text);
            if (size == 0) return false;
            text.remove_prefix(size);
        }
        return true;
    }

    bool take(size_t bytes) {
        if (bytes > m_may_take) return fail("it takes too much memory");
        m_may_take -= bytes;
        return true;
    }

    /// Appends what `raw` stands for. In an attribute every white space is a space.
    bool decode(std::string_view raw, bool attribute, std::string* text) {
        if (!isText(raw)) return fail(kMalformed);
        if (!take(raw.size())) return false;
        size_t plain = 0;
        const auto flush = [&](size_t end) { text->append(raw.substr(plain, end - plain)); };
        for (size_t i = 0; i < raw.size(); ++i) {
            const char c = raw[i];
            if (c == '&') {
                const size_t end = raw.substr(0, i + 12).find(';', i);
                if (end == std::string_view::npos) return fail(kMalformed);
                const std::string character = referenced(raw.substr(i + 1, end - i - 1));
                if (character.empty()) return fail("an unknown entity");
                flush(i);
                text->append(character);
                i = end;
                plain = end + 1;
            } else if (c == '\r' || (attribute && isSpace(c))) {
                flush(i);
                const bool pair = c == '\r' && i + 1 < raw.size() && raw[i + 1] == '\n';
                // Of a line's end by two characters the second one is left.
                if (!pair) text->push_back(attribute ? ' ' : '\n');
                plain = i + 1;
            }
        }
        flush(raw.size());
        return true;
    }

    bool characters() {
        const std::string_view raw = m_rest.substr(0, m_rest.find('<'));
        m_rest.remove_prefix(raw.size());
        if (!m_open.empty()) return decode(raw, false, &m_nodes[m_open.back().node].text);
        for (const char c : raw)
            if (!isSpace(c)) return fail("text outside of its element");
        return true;
    }

    bool literalCharacters() {
        if (m_open.empty()) return fail(kMalformed);
        const std::string_view whole = m_rest;
        if (!skipBehind("]]>"sv)) return false;
        const size_t begin = "<![CDATA["sv.size();
        const std::string_view raw = whole.substr(begin, whole.size() - m_rest.size() - begin - 3);
        if (!isText(raw)) return fail(kMalformed);
        m_nodes[m_open.back().node].text.append(raw);
        return take(raw.size());
    }

    bool readAttributes() {
        m_attributes.clear();
        for (;;) {
            const bool spaced = !m_rest.empty() && isSpace(m_rest[0]);
            skipSpace();
            if (m_rest.empty()) return fail(kCutOff);
            if (m_rest[0] == '>' || m_rest[0] == '/') return true;
            if (!spaced) return fail(kMalformed);
            Attribute attribute;
            if (!readName(&attribute.name)) return false;
            skipSpace();
            if (!skip('=')) return false;
            skipSpace();
            const char quote = m_rest.empty() ? '"' : m_rest[0];
            if (quote != '"' && quote != '\'') return fail(kMalformed);
            if (!skip(quote)) return false;
            const size_t size = m_rest.find(quote);
            if (size == std::string_view::npos) return fail(kCutOff);
            attribute.value = m_rest.substr(0, size);
            if (attribute.value.find('<') != std::string_view::npos) return fail(kMalformed);
            m_rest.remove_prefix(size + 1);
            m_attributes.push_back(attribute);
            if (m_attributes.size() > kMostNodes) return fail("more than 100,000 properties");
        }
    }

    static bool isDeclaration(std::string_view name) {
        return name == "xmlns"sv || startsWith(name, "xmlns:"sv);
    }

    bool declare() {
        for (const Attribute& attribute : m_attributes) {
            if (!isDeclaration(attribute.name)) continue;
            Prefix prefix;
            prefix.name = attribute.name.substr(attribute.name.size() > 5 ? 6 : 5);
            if (m_prefixes.size() == kMostPrefixes) return fail("more than 256 namespaces");
            if (!decode(attribute.value, true, &prefix.ns)) return false;
            if (prefix.ns.size() > kMostNamespace) return fail("a namespace of more than 256 letters");
            m_prefixes.push_back(prefix);
        }
        return true;
    }

    bool addNode(std::string_view name, bool attribute) {
        if (m_nodes.size() >= kMostNodes) return fail("more than 100,000 properties");
        const size_t colon = name.find(':');
        const std::string_view prefix = colon == std::string_view::npos ? ""sv : name.substr(0, colon);
        XmpNode node;
        node.name = colon == std::string_view::npos ? name : name.substr(colon + 1);
        if (node.name.empty() || colon == 0) return fail(kMalformed);
        // An attribute without a prefix is in no namespace.
        bool known = prefix.empty();
        if (!prefix.empty() || !attribute) {
            for (size_t i = m_prefixes.size(); i-- > 0;) {
                if (m_prefixes[i].name != prefix) continue;
                node.ns = m_prefixes[i].ns;
                known = true;
                break;
            }
        }
        if (!known && prefix == "xml"sv) {
            node.ns = kXmlNamespace;
            known = true;
        }
        if (!known) return fail("a prefix without a namespace");
        if (!take(node.ns.size() + node.name.size())) return false;
        m_nodes.push_back(std::move(node));
        m_nodes.back().end = m_nodes.size();
        return true;
    }

    bool startTag() {
        m_rest.remove_prefix(1);
        Element element = {m_nodes.size(), m_prefixes.size(), {}};
        if (!readName(&element.name) || !readAttributes()) return false;
        const bool empty = m_rest[0] == '/';
        if (empty) m_rest.remove_prefix(1);
        if (!skip('>')) return false;
        if (m_has_root && m_open.empty()) return fail("more than one element");
        if (m_open.size() >= kMostLevels) return fail("more than 64 levels");
        if (!declare() || !addNode(element.name, false)) return false;
        m_has_root = true;
        m_open.push_back(element);
        for (const Attribute& attribute : m_attributes) {
            if (isDeclaration(attribute.name)) continue;
            if (!addNode(attribute.name, true) || !decode(attribute.value, true, &m_nodes.back().text))
                return false;
        }
        if (empty) close();
        return true;
    }

    bool endTag() {
        m_rest.remove_prefix(2);
        std::string_view name;
        if (!readName(&name)) return false;
        skipSpace();
        if (!skip('>')) return false;
        if (m_open.empty() || name != m_open.back().name) return fail("a tag that closes none");
        close();
        return true;
    }

    void close() {
        m_nodes[m_open.back().node].end = m_nodes.size();
        m_prefixes.resize(m_open.back().prefixes);
        m_open.pop_back();
    }

    std::string_view m_rest;
    std::vector<XmpNode>& m_nodes;
    size_t m_may_take;
    const char* m_fault = "";
    bool m_has_root = false;
    std::vector<Element> m_open;
    std::vector<Prefix> m_prefixes;
    std::vector<Attribute> m_attributes;
};

}  // namespace

std::string Xmp::add(std::string_view packet) {
    // Writers pad packets with zeroes.
    while (!packet.empty() && packet.back() == '\0') packet.remove_suffix(1);
    return Scanner(packet, &m_nodes).run();
}

}  // namespace quorvane::media
