// Documents: parsing and its failures, the root element, serialisation, version and encoding.
#include "xml_test_support.h"

namespace {

class DocumentTest : public XmlTest {};

TEST_F(DocumentTest, ParseFailuresReportCodeMinusOneWithoutMessage) {
    const std::string broken[] = {"", "<a>", "not xml", "<a></b>", std::string("<a>\0</a>", 8)};
    for (const auto &text : broken) {
        std::optional<ZXMLError> error;
        EXPECT_FALSE(ZXMLDocument::initWithXMLString(text, 0, &error)) << text;
        ASSERT_TRUE(error) << text;
        EXPECT_EQ(error->domain, ZXMLErrorDomain);
        EXPECT_EQ(error->code, -1);
        EXPECT_TRUE(error->userInfo.empty());
        error.reset();
        EXPECT_FALSE(ZXMLElement::initWithXMLString(text, &error)) << text;
        ASSERT_TRUE(error);
        EXPECT_EQ(error->code, -1);
    }
    EXPECT_FALSE(ZXMLDocument::initWithXMLString("<a>", 0, nullptr));
}

TEST_F(DocumentTest, SuccessClearsTheErrorAndAttachesTheCache) {
    std::optional<ZXMLError> error = ZXMLError{ZXMLErrorDomain, 5, {}};
    auto doc = ZXMLDocument::initWithXMLString("<a><b/></a>", 0, &error);
    ASSERT_TRUE(doc);
    EXPECT_FALSE(error);
    ASSERT_NE(ZXMLStringsCache::of(doc->XMLDoc()), nullptr);
    doc->rootElement()->childAtIndex(0)->name();
    EXPECT_GE(ZXMLStringsCache::of(doc->XMLDoc())->size(), 1u);
    EXPECT_FALSE(doc->rootElement()->shouldFreeXMLNode());
    EXPECT_EQ(doc->description().rfind("ZXMLDocument 0x", 0), 0u);
}

TEST_F(DocumentTest, StandaloneElementOwnsACopyOfTheRoot) {
    auto e = ZXMLElement::initWithXMLString("<a k='1'><b/></a>", nullptr);
    ASSERT_TRUE(e);
    EXPECT_TRUE(e->shouldFreeXMLNode());
    EXPECT_EQ(e->XMLNode()->doc, nullptr);
    EXPECT_EQ(str(e->XMLString()), "<a k=\"1\"><b/></a>");
}

TEST_F(DocumentTest, RootElementDocumentsAndSerialisation) {
    auto e = ZXMLNode::elementWithName("a", std::string_view("x"));
    auto doc = ZXMLDocument::initWithRootElement(*e);
    ASSERT_TRUE(doc);
    EXPECT_NE(doc->rootElement()->XMLNode(), e->XMLNode());
    EXPECT_EQ(doc->XMLData(), "<?xml version=\"1.0\"?>\n<a>x</a>\n");
    doc->setVersion("1.1");
    doc->setCharacterEncoding("ISO-8859-1");
    EXPECT_EQ(doc->XMLData(), "<?xml version=\"1.1\" encoding=\"ISO-8859-1\"?>\n<a>x</a>\n");
    doc->setCharacterEncoding("no-such-encoding");
    EXPECT_FALSE(doc->XMLData());
    doc->setCharacterEncoding(std::nullopt);
    EXPECT_TRUE(doc->XMLData());

    ZXMLElement nothing(nullptr, false);
    auto empty = ZXMLDocument::initWithRootElement(nothing);
    ASSERT_TRUE(empty);
    EXPECT_EQ(empty->rootElement(), nullptr);
}

} // namespace
