#include "media/embedded/xmp.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include "media/embedded/depth_terms.h"
#include "support/photo_writers/pictures.h"

namespace quorvane::media {
namespace {

using namespace std::string_literals;
using test::extendedXmpSegments;
using test::xmpSegment;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr char kNs[] = "http://example.org/depth/";
const std::string kGuid = "0123456789ABCDEF0123456789ABCDEF";

/// A packet around one description, which has the prefix "d" for kNs.
std::string packet(const std::string& attributes, const std::string& inside = "") {
    return "<?xpacket begin=\"\xef\xbb\xbf\" id=\"W5M0MpCehiHzreSzNTczkc9d\"?>"
           "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\">"
           "<rdf:RDF xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\">"
           "<rdf:Description rdf:about=\"\" xmlns:d=\"" +
           std::string(kNs) + "\" xmlns:note=\"http://ns.adobe.com/xmp/note/\" " + attributes + ">" + inside +
           "</rdf:Description></rdf:RDF></x:xmpmeta><?xpacket end=\"w\"?>";
}

Xmp read(const std::string& text) {
    Xmp xmp;
    EXPECT_EQ(xmp.add(text), "");
    return xmp;
}

TEST(Xmp, PropertyIsAnAttributeOrAnElement) {
    EXPECT_EQ(read(packet("d:Near=\"1.5\"")).text(kNs, "Near"), "1.5");
    EXPECT_EQ(read(packet("", "<d:Near>\n  1.5\n</d:Near>")).text(kNs, "Near"), "1.5");
    EXPECT_EQ(read(packet("", "<d:Near>1&#46;5</d:Near>")).text(kNs, "Near"), "1.5");
    EXPECT_EQ(
        read(packet("", "<d:Map rdf:parseType=\"Resource\"><d:Near>1.5</d:Near></d:Map>")).text(kNs, "Near"),
        "1.5");
}

TEST(Xmp, NamesAreMatchedByNamespaceNotByPrefix) {
    const Xmp xmp = read(packet("xmlns:e=\"" + std::string(kNs) + "\" e:Near=\"1\"") + "");
    EXPECT_EQ(xmp.text(kNs, "Near"), "1");
    const Xmp other = read(packet("xmlns:GDepth=\"http://example.org/else/\" GDepth:Near=\"1\""));
    EXPECT_EQ(other.text(kNs, "Near"), "");
    EXPECT_EQ(other.text("http://example.org/else/", "Near"), "1");
    EXPECT_EQ(read(packet("Near=\"1\"")).text(kNs, "Near"), "") << "in no namespace";
}

TEST(Xmp, TextMeansWhatXmlSays) {
    const auto text = [](const std::string& inside) {
        return std::string(read(packet("", "<d:Near>" + inside + "</d:Near>")).find(kNs, "Near")->text);
    };
    EXPECT_EQ(text("&lt;&gt;&amp;&apos;&quot;"), "<>&'\"");
    EXPECT_EQ(text("&#65;&#x42;&#x43;&#xe4;&#x20AC;&#x1F600;"), "ABC\xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80");
    EXPECT_EQ(text("a<!-- <b> -->c<?d e?>f<![CDATA[<&amp;>]]>g"), "acf<&amp;>g");
    EXPECT_EQ(text("a\r\nb\rc\nd\te"), "a\nb\nc\nd\te");
    EXPECT_EQ(text("\xc3\xa4"), "\xc3\xa4");
    const Xmp quoted = read(packet("d:Near = 'a\"\r\n\tb&#10;c>'"));
    EXPECT_EQ(quoted.find(kNs, "Near")->text, "a\"  b\nc>");
}

TEST(Xmp, ANamespaceHoldsWithinItsElement) {
    const Xmp xmp =
        read("<a xmlns='u' b='1'><a xmlns='v'><c/></a><c xml:d='2'/><e:c xmlns:e='w' c='3'/></a>");
    EXPECT_EQ(xmp.nodes()[0].ns, "u");
    EXPECT_EQ(xmp.text("", "b"), "1") << "an attribute without a prefix is in none";
    EXPECT_NE(xmp.find("v", "c"), nullptr);
    EXPECT_NE(xmp.find("u", "c"), nullptr);
    EXPECT_EQ(xmp.text("http://www.w3.org/XML/1998/namespace", "d"), "2");
    EXPECT_NE(xmp.find("w", "c"), nullptr);
}

TEST(Xmp, WhatIsNotXmlIsRefused) {
    for (const char* text : {"<a>",
                             "<a></b>",
                             "<a/><b/>",
                             "<a/>b",
                             "<a b></a>",
                             "<a b=c/>",
                             "<a b='1'c='2'/>",
                             "<a b='<'/>",
                             "<a:b/>",
                             "<:a/>",
                             "<a:/>",
                             "<a>&b;</a>",
                             "<a>&amp</a>",
                             "<a>&#;</a>",
                             "<a>&#0;</a>",
                             "<a>&#xd800;</a>",
                             "<a>&#x110000;</a>",
                             "<a>&#99999999999999999999;</a>",
                             "<a>\x01</a>",
                             "<a>\xc0\xaf</a>",
                             "<a>\xed\xa0\x80</a>",
                             "<a>\xf4\x90\x80\x80</a>",
                             "<a>\xe4</a>",
                             "<a b='\xff'/>",
                             "<\xff/>",
                             "</a>",
                             "<>",
                             "< a/>",
                             "<a/ >",
                             "<!a><a/>",
                             "<![CDATA[]]><a/>",
                             "<a><!--</a>",
                             "<?b",
                             "\xff\xfe<\0a\0"})
        EXPECT_NE(Xmp().add(text), "") << text;
    EXPECT_NE(Xmp().add("<a>\0</a>"s), "");
}

TEST(Xmp, SearchStaysBelowAnAncestor) {
    const Xmp xmp = read(packet("d:Near=\"0\"",
                                "<d:Camera><d:Map d:Near=\"1\"/></d:Camera>"
                                "<d:Camera><d:Map><d:Near>2</d:Near></d:Map></d:Camera><d:Near>3</d:Near>"));
    const auto cameras = nodesOf(xmp, {kNs, kNs}, "Camera");
    ASSERT_EQ(cameras.size(), 2u);
    EXPECT_EQ(xmp.text(kNs, "Near"), "0");
    EXPECT_EQ(xmp.text(kNs, "Near", cameras[0]), "1");
    EXPECT_EQ(xmp.text(kNs, "Near", cameras[1]), "2");
    EXPECT_EQ(xmp.find(kNs, "Far", cameras[1]), nullptr);
    EXPECT_EQ(nodesOf(xmp, {kNs, kNs}, "Near").size(), 4u);
    EXPECT_EQ(nodesOf(xmp, {kNs, kNs}, "Near", cameras[0]).size(), 1u);
}

TEST(Xmp, ZeroesMayFollowAPacket) {
    EXPECT_EQ(read(packet("d:Near=\"1\"") + "\0\0\0"s).text(kNs, "Near"), "1");
}

TEST(Xmp, KeepsWhatCameBeforeAFault) {
    Xmp xmp;
    const std::string whole = packet("d:Near=\"1\"", "<d:Far>2</d:Far>");
    EXPECT_NE(xmp.add(whole.substr(0, whole.find("</d:Far>"))), "");
    EXPECT_EQ(xmp.text(kNs, "Near"), "1");
    for (const XmpNode& node : xmp.nodes()) EXPECT_LE(node.end, xmp.nodes().size());
    EXPECT_NE(Xmp().add("not XML"), "");
    EXPECT_NE(Xmp().add(""), "");
}

TEST(Xmp, EveryCutIsRefusedWithoutHarm) {
    const std::string whole = packet("d:Near=\"1\"", "<d:Map d:Far=\"2\"><d:Units>m</d:Units></d:Map>");
    const size_t closed = whole.find("</x:xmpmeta>");
    for (size_t size = 0; size < closed; ++size) EXPECT_NE(Xmp().add(whole.substr(0, size)), "") << size;
}

TEST(Xmp, HostilePacketsAreRefused) {
    const auto refusal = [](const std::string& text) { return Xmp().add(text); };
    EXPECT_THAT(refusal("<!DOCTYPE a [<!ENTITY b \"c\">]><a>&b;</a>"), HasSubstr("document type"));

    std::string deep;
    for (int i = 0; i < 65; ++i) deep += "<a>";
    EXPECT_THAT(refusal(deep + "<b/>"), HasSubstr("64 levels"));
    deep.clear();
    for (int i = 0; i < 64; ++i) deep += "<a>";
    EXPECT_THAT(refusal(deep + "<b c=\"d\"/>"), HasSubstr("64 levels"));

    std::string many = "<a>";
    for (int i = 0; i < 100'001; ++i) many += "<b/>";
    EXPECT_THAT(refusal(many + "</a>"), HasSubstr("100,000"));

    EXPECT_THAT(refusal("<a:b xmlns:a=\"" + std::string(257, 'x') + "\"/>"), HasSubstr("namespace"));
}

long mostMegabytesHeld() {
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss / 1024;
}

// Each attribute's name is written out with its namespace: here 60 MB.
TEST(Xmp, LongNamespaceOfManyAttributesTakesLittleMemory) {
    std::string text = "<a xmlns:n=\"" + std::string(200'000, 'x') + "\"";
    for (int i = 0; i < 300; ++i) text += " n:a" + std::to_string(i) + "=\"\"";
    const long before = mostMegabytesHeld();
    EXPECT_THAT(Xmp().add(text + "/>"), HasSubstr("namespace"));
    EXPECT_LT(mostMegabytesHeld() - before, 20);
}

// Names within the limits, of which each attribute's is written out with its namespace: 15 MB of 0.6.
TEST(Xmp, MemoryIsLimitedByTheSizeOfThePacket) {
    std::string text = "<a xmlns:n=\"" + std::string(256, 'x') + "\"";
    for (int i = 0; i < 60'000; ++i) text += " n:a" + std::to_string(i) + "=\"\"";
    EXPECT_THAT(Xmp().add(text + "/>"), HasSubstr("too much memory"));
}

TEST(Xmp, LongValuesAreReadInOneGo) {
    std::string value;
    for (int i = 0; value.size() < (size_t{16} << 20); ++i)
        value += std::to_string(i) + (i % 20 == 0 ? "\n" : "+");
    value += "end";
    const Xmp attribute = read(packet("d:Data=\"" + value + "\""));
    EXPECT_EQ(attribute.text(kNs, "Data").size(), value.size());
    EXPECT_TRUE(read(packet("", "<d:Data>" + value + "</d:Data>")).text(kNs, "Data") == value);
}

class ExtendedXmp : public testing::Test {
  protected:
    /// What is read from a JPEG of these segments.
    Xmp read(const std::vector<std::string>& segments) {
        m_file = test::withSegments(test::jpegFile(test::somePhoto(16, 16)), segments);
        remarks.clear();
        return xmpOf(*walkJpeg(m_file), &remarks);
    }

    const std::string data = std::string(1000, 'D');
    const std::string extended = packet("d:Data=\"" + data + "\"");
    const std::string main = xmpSegment(packet("d:Near=\"1\" note:HasExtendedXMP=\"" + kGuid + "\""));
    const std::vector<std::string> pieces = extendedXmpSegments(kGuid, extended, 300);
    std::vector<std::string> remarks;

  private:
    std::string m_file;
};

TEST_F(ExtendedXmp, IsPutTogether) {
    std::vector<std::string> segments = {main};
    segments.insert(segments.end(), pieces.begin(), pieces.end());
    const Xmp xmp = read(segments);
    EXPECT_EQ(xmp.text(kNs, "Near"), "1");
    EXPECT_EQ(xmp.text(kNs, "Data"), data);
    EXPECT_THAT(remarks, IsEmpty());
}

TEST_F(ExtendedXmp, PiecesComeInAnyOrderAndTwice) {
    std::vector<std::string> segments(pieces.rbegin(), pieces.rend());
    segments.push_back(main);
    segments.push_back(pieces[1]);
    EXPECT_EQ(read(segments).text(kNs, "Data"), data);
    EXPECT_THAT(remarks, IsEmpty());
}

TEST_F(ExtendedXmp, PiecesOfAnotherGuidAreNoneOfIt) {
    const std::string other_guid(32, 'F');
    std::vector<std::string> segments = {main};
    for (const std::string& piece : extendedXmpSegments(other_guid, packet("d:Data=\"other\""), 300))
        segments.push_back(piece);
    EXPECT_EQ(read(segments).text(kNs, "Data"), "");
    EXPECT_THAT(remarks, ElementsAre(HasSubstr("no piece of that GUID")));

    segments.insert(segments.end(), pieces.begin(), pieces.end());
    EXPECT_EQ(read(segments).text(kNs, "Data"), data);
    EXPECT_THAT(remarks, IsEmpty());
}

TEST_F(ExtendedXmp, SixteenPacketsAreRead) {
    std::vector<std::string> segments(15, xmpSegment(packet("")));
    segments.push_back(xmpSegment(packet("d:Near=\"1\"")));
    segments.push_back(xmpSegment(packet("d:Far=\"2\"")));
    const Xmp xmp = read(segments);
    EXPECT_EQ(xmp.text(kNs, "Near"), "1");
    EXPECT_EQ(xmp.text(kNs, "Far"), "");
}

TEST_F(ExtendedXmp, BrokenPacketsAreSaidAFewTimes) {
    std::vector<std::string> segments(1000, xmpSegment("<a"));
    segments.insert(segments.begin(), xmpSegment(packet("d:Near=\"1\"")));
    EXPECT_EQ(read(segments).text(kNs, "Near"), "1");
    EXPECT_THAT(remarks.size(), testing::AllOf(testing::Gt(0u), testing::Lt(20u)));
}

TEST_F(ExtendedXmp, IsIgnoredWhereNobodyAsksForIt) {
    std::vector<std::string> segments = {xmpSegment(packet("d:Near=\"1\""))};
    segments.insert(segments.end(), pieces.begin(), pieces.end());
    EXPECT_EQ(read(segments).text(kNs, "Data"), "");
    EXPECT_THAT(remarks, IsEmpty());
}

TEST_F(ExtendedXmp, MissingPiecesAreSaid) {
    for (size_t missing = 0; missing < pieces.size(); ++missing) {
        std::vector<std::string> segments = {main};
        segments.insert(segments.end(), pieces.begin(), pieces.end());
        segments.erase(segments.begin() + 1 + static_cast<std::ptrdiff_t>(missing));
        const Xmp xmp = read(segments);
        EXPECT_EQ(xmp.text(kNs, "Near"), "1");
        EXPECT_EQ(xmp.text(kNs, "Data"), "");
        EXPECT_THAT(remarks, ElementsAre(HasSubstr("pieces are missing"))) << missing;
    }
}

/// A piece with what is said of it.
std::string piece(uint64_t full, uint64_t offset, const std::string& bytes) {
    return test::segment(0xe1, "http://ns.adobe.com/xmp/extension/\0"s + kGuid + test::big(full, 4) +
                                   test::big(offset, 4) + bytes);
}

TEST_F(ExtendedXmp, PiecesThatDoNotFitAreSaid) {
    const std::string first = extended.substr(0, 600), second = extended.substr(600);
    const auto fault = [&](const std::vector<std::string>& some) {
        std::vector<std::string> segments = {main};
        segments.insert(segments.end(), some.begin(), some.end());
        EXPECT_EQ(read(segments).text(kNs, "Data"), "");
        EXPECT_EQ(remarks.size(), 1u);
        return remarks.empty() ? "" : remarks[0];
    };
    const size_t full = extended.size();
    EXPECT_THAT(fault({piece(full, 0, first), piece(full, 500, extended.substr(500))}), HasSubstr("overlap"));
    EXPECT_THAT(fault({piece(full, 0, first), piece(full + 1, 600, second)}), HasSubstr("disagree"));
    EXPECT_THAT(fault({piece(full + 1, 0, first), piece(full + 1, 600, second)}), HasSubstr("missing"));
    EXPECT_THAT(fault({piece(full - 1, 0, first), piece(full - 1, 600, second)}), HasSubstr("longer"));
    EXPECT_THAT(fault({piece(0xffffffff, 0xfffffff0, first)}), HasSubstr("missing"));
    EXPECT_THAT(fault({test::segment(0xe1, "http://ns.adobe.com/xmp/extension/\0"s + kGuid + "\1\2\3")}),
                HasSubstr("without its place"));
}

}  // namespace
}  // namespace quorvane::media
