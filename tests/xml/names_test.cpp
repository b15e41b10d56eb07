// Names, prefixes, kinds and the wrapper class chosen per node type.
#include "xml_test_support.h"

#include <libxml/parser.h>

namespace {

struct NameCase {
    std::optional<std::string> name, local, prefix;
};

class NamesTest : public XmlTest {};

TEST_F(NamesTest, LocalNameAndPrefixSplitAtTheFirstColon) {
    const NameCase cases[] = {
        {"a:b", "b", "a"}, {"a:", "a:", "a"}, {":b", "b", ""}, {"ab", "ab", std::nullopt},
        {"a:b:c", "b:c", "a"}, {"", "", std::nullopt}, {std::nullopt, std::nullopt, std::nullopt},
    };
    for (const auto &c : cases) {
        std::optional<std::string_view> in = c.name ? std::optional<std::string_view>(*c.name) : std::nullopt;
        EXPECT_EQ(ZXMLNode::localNameForName(in), c.local) << c.name.value_or("nil");
        EXPECT_EQ(ZXMLNode::prefixForName(in), c.prefix) << c.name.value_or("nil");
    }
}

TEST_F(NamesTest, QualifiedNamesPrefixesAndURIsOfParsedNodes) {
    auto doc = parse(R"(<r xmlns="urn:d" xmlns:p="urn:p"><p:a p:x="1" y="2"/>text</r>)");
    auto root = doc->rootElement();
    auto a = element(root->childAtIndex(0));
    auto px = a->attributeForName("p:x");
    auto y = a->attributeForName("y");
    auto text = root->childAtIndex(1);
    struct Row { ZXMLNodePtr node; std::string name, local, prefix, uri; };
    const Row rows[] = {
        {root, "r", "r", "", "urn:d"},
        {a, "p:a", "a", "p", "urn:p"},
        {px, "p:x", "x", "p", "urn:p"},
        {y, "y", "y", "", "<nothing>"},
        {text, "text", "text", "", "<nothing>"},
    };
    for (const auto &r : rows) {
        ASSERT_TRUE(r.node) << r.name;
        EXPECT_EQ(str(r.node->name()), r.name);
        EXPECT_EQ(str(r.node->localName()), r.local) << r.name;
        EXPECT_EQ(str(r.node->prefix()), r.prefix) << r.name;
        EXPECT_EQ(str(r.node->URI()), r.uri) << r.name;
    }
    auto ns = element(root)->namespaces();
    ASSERT_TRUE(ns);
    ASSERT_EQ(ns->size(), 2u);
    EXPECT_EQ(str((*ns)[0]->name()), "");
    EXPECT_EQ(str((*ns)[1]->name()), "p");
    EXPECT_EQ(str((*ns)[1]->stringValue()), "urn:p");
    EXPECT_FALSE((*ns)[1]->URI());
}

TEST_F(NamesTest, KindsAndWrapperClassFollowTheLibxml2Type) {
    auto doc = parse(R"(<!DOCTYPE r [<!ENTITY e "v">]><r a="1"><!--c--><?pi d?>t&e;<![CDATA[x]]></r>)");
    auto root = doc->rootElement();
    std::vector<std::pair<ZXMLNodePtr, int>> rows = {
        {root, ZXMLElementKind},
        {root->childAtIndex(0), ZXMLCommentKind},
        {root->childAtIndex(1), ZXMLProcessingInstructionKind},
        {root->childAtIndex(2), ZXMLTextKind},
        {root->childAtIndex(3), ZXMLEntityDeclarationKind},
        {element(root)->attributeForName("a"), ZXMLAttributeKind},
        {ZXMLNode::namespaceWithName("p", "urn:p"), ZXMLNamespaceKind},
        {std::make_shared<ZXMLNode>(nullptr, false), ZXMLInvalidKind},
    };
    auto all = doc->nodesForXPath("/", nullptr);
    ASSERT_TRUE(all && all->size() == 1);
    rows.emplace_back((*all)[0], ZXMLDocumentKind);
    rows.emplace_back((*all)[0]->childAtIndex(0), ZXMLDTDKind);
    for (std::size_t i = 0; i < rows.size(); ++i) {
        ASSERT_TRUE(rows[i].first) << i;
        EXPECT_EQ(rows[i].first->kind(), rows[i].second) << i;
        const bool isElement = element(rows[i].first) != nullptr;
        EXPECT_EQ(isElement, rows[i].second == ZXMLElementKind) << i;
    }
    // CDATA sections are parsed into plain text.
    EXPECT_EQ(str(root->childAtIndex(4)->stringValue()), "x");
}

TEST_F(NamesTest, DescriptionShowsClassTypeNameAndMarkup) {
    auto e = ZXMLNode::elementWithName("a", std::string_view("v"));
    const std::string d = e->description();
    EXPECT_EQ(d.rfind("ZXMLElement 0x", 0), 0u) << d;
    EXPECT_NE(d.find(": {type:1 name:a xml:\"<a>v</a>\"}"), std::string::npos) << d;
    ZXMLNode empty(nullptr, false);
    EXPECT_NE(empty.description().find("{type:-1 name:(null) xml:\"(null)\"}"), std::string::npos);
}

} // namespace
