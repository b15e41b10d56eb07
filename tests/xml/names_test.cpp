// Names, prefixes, look-ups in scope, kinds and the wrapper class chosen per node type.
#include "xml_test_support.h"

namespace zellick::test {

class NamesTest : public XmlTest {};

TEST_F(NamesTest, LocalNameAndPrefixSplitAtTheFirstColon) {
  struct Row {
    std::optional<std::string_view> name;
    std::optional<std::string> local, prefix;
  };
  const Row rows[] = {
      {"a:b", "b", "a"},
      {"a:", "a:", "a"},
      {":b", "b", ""},
      {"ab", "ab", std::nullopt},
      {"a:b:c", "b:c", "a"},
      {"", "", std::nullopt},
      {std::nullopt, std::nullopt, std::nullopt},
  };
  for (const auto& r : rows) {
    EXPECT_EQ(ZXMLNode::localNameForName(r.name), r.local) << r.name.value_or("nil");
    EXPECT_EQ(ZXMLNode::prefixForName(r.name), r.prefix) << r.name.value_or("nil");
  }
}

TEST_F(NamesTest, NamesAndNamespacesOfParsedNodesAndLookUpsInScope) {
  auto doc = parse(R"(<r xmlns="urn:d" xmlns:p="urn:p"><p:a p:x="1" y="2" q:z="3"/>text</r>)");
  auto root = doc->rootElement();
  auto a = element(root->childAtIndex(0));
  auto ns = root->namespaces();
  ASSERT_TRUE(a && ns && ns->size() == 2u);
  struct Row {
    ZXMLNodePtr node;
    std::string name, local, prefix, uri;
  };
  const Row rows[] = {
      {root, "r", "r", "", "urn:d"},
      {a, "p:a", "a", "p", "urn:p"},
      {a->attributeForName("p:x"), "p:x", "x", "p", "urn:p"},
      {a->attributeForLocalName("x", "urn:p"), "p:x", "x", "p", "urn:p"},
      {a->attributeForName("y"), "y", "y", "", "<nothing>"},
      {a->attributeForName("q:z"), "q:z", "z", "", "<nothing>"},  // undeclared: the literal name
      {root->childAtIndex(1), "text", "text", "", "<nothing>"},
      // A declaration is named by its prefix and has no namespace of its own.
      {(*ns)[0], "", "", "", "<nothing>"},
      {(*ns)[1], "p", "p", "", "<nothing>"},
  };
  for (const auto& r : rows) {
    ASSERT_TRUE(r.node) << r.name;
    EXPECT_EQ(str(r.node->name()), r.name);
    EXPECT_EQ(str(r.node->localName()), r.local) << r.name;
    EXPECT_EQ(str(r.node->prefix()), r.prefix) << r.name;
    EXPECT_EQ(str(r.node->URI()), r.uri) << r.name;
  }
  EXPECT_EQ(a->attributeForName("nope"), nullptr);
  // Resolved prefixes are the shared strings of the cache, as the prefixes read off nodes.
  EXPECT_EQ(str(a->resolvePrefixForNamespaceURI("urn:p")), "p");
  EXPECT_EQ(a->resolvePrefixForNamespaceURI("urn:p").get(), a->prefix().get());
  EXPECT_EQ(str(a->resolvePrefixForNamespaceURI("urn:d")), "");
  EXPECT_EQ(a->resolvePrefixForNamespaceURI("urn:d").get(), root->prefix().get());
  EXPECT_EQ(a->resolvePrefixForNamespaceURI("urn:x"), nullptr);
}

TEST_F(NamesTest, KindsAndWrapperClassFollowTheLibxml2Type) {
  auto doc = parse(R"(<!DOCTYPE r [<!ENTITY e "v">]><r a="1"><!--c--><?pi d?>t&e;</r>)");
  auto root = doc->rootElement();
  auto top = doc->nodesForXPath("/", nullptr);
  ASSERT_TRUE(top && top->size() == 1);
  const std::pair<ZXMLNodePtr, int> rows[] = {
      {root, ZXMLElementKind},
      {root->childAtIndex(0), ZXMLCommentKind},
      {root->childAtIndex(1), ZXMLProcessingInstructionKind},
      {root->childAtIndex(2), ZXMLTextKind},
      {root->childAtIndex(3), ZXMLEntityDeclarationKind},
      {root->attributeForName("a"), ZXMLAttributeKind},
      {ZXMLNode::namespaceWithName("p", "urn:p"), ZXMLNamespaceKind},
      {std::make_shared<ZXMLNode>(nullptr, false), ZXMLInvalidKind},
      {(*top)[0], ZXMLDocumentKind},
      {(*top)[0]->childAtIndex(0), ZXMLDTDKind},
  };
  for (std::size_t i = 0; i < std::size(rows); ++i) {
    ASSERT_TRUE(rows[i].first) << "row " << i;
    EXPECT_EQ(rows[i].first->kind(), rows[i].second) << "row " << i;
    EXPECT_EQ(element(rows[i].first) != nullptr, rows[i].second == ZXMLElementKind) << "row " << i;
  }
}

TEST_F(NamesTest, DescriptionShowsClassTypeNameAndMarkup) {
  const std::string d = ZXMLNode::elementWithName("a", std::string_view("v"))->description();
  EXPECT_EQ(d.rfind("ZXMLElement 0x", 0), 0u) << d;
  EXPECT_NE(d.find(": {type:1 name:a xml:\"<a>v</a>\"}"), std::string::npos) << d;
}

}  // namespace zellick::test
