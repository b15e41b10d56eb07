// XPath on documents and detached subtrees, with and without a namespace dictionary.
#include "xml_test_support.h"

#include <libxml/xmlerror.h>

namespace {

class XPathTest : public XmlTest {};

TEST_F(XPathTest, QueriesWithAndWithoutNamespaceDictionary) {
    auto doc = parse(R"(<r xmlns="urn:d" xmlns:p="urn:p"><item/><p:item/><item/></r>)");
    const ZXMLNamespaceMap map{{"d", "urn:d"}, {"x", "urn:p"}};
    struct Row { std::string xpath; const ZXMLNamespaceMap *ns; std::size_t count; };
    const Row rows[] = {
        {"//_def_ns:item", nullptr, 2},  // default namespace registered as _def_ns
        {"//p:item", nullptr, 1},        // the root's namespace chain reaches p
        {"//d:item", &map, 2},
        {"//x:item", &map, 1},
        {"//item", nullptr, 0},
        {"count(//*)", nullptr, 0},     // not a node set: empty, not nothing
    };
    for (const auto &r : rows) {
        std::optional<ZXMLError> error;
        auto found = doc->nodesForXPath(r.xpath, r.ns, &error);
        ASSERT_TRUE(found) << r.xpath;
        EXPECT_FALSE(error) << r.xpath;
        EXPECT_EQ(found->size(), r.count) << r.xpath;
    }
}

TEST_F(XPathTest, FailuresCarryTheEngineCodeAndMessage) {
    auto doc = parse("<r><p:a/></r>");
    std::optional<ZXMLError> error;
    EXPECT_FALSE(doc->nodesForXPath("//p:a", &error));  // nothing registered without a namespace
    ASSERT_TRUE(error);
    EXPECT_EQ(error->domain, ZXMLErrorDomain);
    EXPECT_EQ(error->code, XML_XPATH_UNDEF_PREFIX_ERROR);
    EXPECT_EQ(error->userInfo.at("error"), "//p:a");

    error.reset();
    EXPECT_FALSE(doc->nodesForXPath("//[", &error));
    ASSERT_TRUE(error);
    EXPECT_NE(error->code, 0);
    EXPECT_FALSE(doc->nodesForXPath("//[", nullptr));  // no error pointer is fine

    // Success leaves an earlier error untouched.
    auto found = doc->nodesForXPath("/r", &error);
    ASSERT_TRUE(found);
    EXPECT_TRUE(error);

    ZXMLNode null(nullptr, false);
    error.reset();
    EXPECT_FALSE(null.nodesForXPath("/", &error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, -1);
    EXPECT_EQ(error->userInfo.at("error"), "invalid node");
}

TEST_F(XPathTest, DetachedSubtreeIsQueriedAndLeftDetached) {
    auto top = ZXMLElement::initWithXMLString("<t xmlns:p='urn:p'><p:a>1</p:a><a>2</a></t>", nullptr);
    ASSERT_TRUE(top);
    auto first = top->childAtIndex(0);
    struct Row { const ZXMLNode *context; std::string xpath; std::vector<std::string> values; };
    const Row rows[] = {
        {top.get(), "a", {"2"}},
        {top.get(), "/t/*", {"1", "2"}},
        {first.get(), "../a", {"2"}},
        {first.get(), "/", {}},  // the temporary document is not handed out
    };
    for (const auto &r : rows) {
        auto found = r.context->nodesForXPath(r.xpath, nullptr);
        ASSERT_TRUE(found) << r.xpath;
        std::vector<std::string> values;
        for (const auto &n : *found) {
            values.push_back(str(n->stringValue()));
            EXPECT_FALSE(n->shouldFreeXMLNode());
        }
        EXPECT_EQ(values, r.values) << r.xpath;
        EXPECT_EQ(top->XMLNode()->doc, nullptr);
        EXPECT_EQ(top->XMLNode()->parent, nullptr);
        EXPECT_EQ(first->XMLNode()->doc, nullptr);
    }
    // A lone attribute is no root element, yet can still be queried.
    auto attr = ZXMLNode::attributeWithName("k", "v");
    auto self = attr->nodesForXPath("string(.)", nullptr);
    ASSERT_TRUE(self);
    EXPECT_TRUE(self->empty());
    EXPECT_EQ(attr->XMLNode()->doc, nullptr);
}

TEST_F(XPathTest, NamespaceAxisResultsOutliveTheQuery) {
    auto doc = parse("<r xmlns:p='urn:p'><a/></r>");
    auto found = doc->nodesForXPath("/r/a/namespace::*", nullptr);
    ASSERT_TRUE(found);
    std::vector<std::string> hrefs;
    for (const auto &n : *found) {
        EXPECT_EQ(n->kind(), ZXMLNamespaceKind);
        hrefs.push_back(str(n->stringValue()));
    }
    std::sort(hrefs.begin(), hrefs.end());
    EXPECT_EQ(hrefs, (std::vector<std::string>{"http://www.w3.org/XML/1998/namespace", "urn:p"}));
}

} // namespace
