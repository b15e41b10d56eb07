// XPath on documents and detached subtrees, with and without a namespace dictionary.
#include "xml_test_support.h"

namespace zellick::test {

class XPathTest : public XmlTest {};

TEST_F(XPathTest, QueriesWithAndWithoutNamespaceDictionary) {
  auto doc = parse(
      R"(<r xmlns="urn:d" xmlns:p="urn:p"><item>1</item><p:item>2</p:item><item>3</item></r>)");
  const ZXMLNamespaceMap map{{"d", "urn:d"}, {"x", "urn:p"}};
  struct Row {
    std::string xpath;
    const ZXMLNamespaceMap* ns;
    std::vector<std::string> values;
  };
  const Row rows[] = {
      {"//_def_ns:item", nullptr, {"1", "3"}},  // the default namespace is registered as _def_ns
      {"//p:item", nullptr, {"2"}},             // the root's namespace chain reaches p
      {"//d:item", &map, {"1", "3"}},
      {"//x:item", &map, {"2"}},
      {"//item", nullptr, {}},
      {"count(//*)", nullptr, {}},  // not a node set: empty, not nothing
      // Namespace results are the element's own records, still there after the query.
      {"/d:r/x:item/namespace::*",
       &map,
       {"http://www.w3.org/XML/1998/namespace", "urn:d", "urn:p"}},
  };
  for (const auto& r : rows) {
    std::optional<ZXMLError> error;
    auto found = doc->nodesForXPath(r.xpath, r.ns, &error);
    ASSERT_TRUE(found) << r.xpath;
    EXPECT_FALSE(error) << r.xpath;
    EXPECT_EQ(values(*found), r.values) << r.xpath;
  }
}

TEST_F(XPathTest, FailuresCarryTheEngineCodeAndMessage) {
  auto doc = parse("<r><p:a/></r>");
  auto ns = ZXMLNode::namespaceWithName("p", "urn:p");
  ZXMLNode null(nullptr, false);
  struct Row {
    const ZXMLNode* on;
    std::string xpath;
    int code;
    std::string message;
  };
  const Row rows[] = {
      {nullptr, "//p:a", XML_XPATH_UNDEF_PREFIX_ERROR, "//p:a"},  // no namespace given
      {nullptr, "//[", XML_XPATH_EXPR_ERROR, "//["},
      {&null, "/", -1, "invalid node"},
      {ns.get(), "/", -1, "invalid node"},
  };
  for (const auto& r : rows) {
    std::optional<ZXMLError> error;
    EXPECT_FALSE(r.on ? r.on->nodesForXPath(r.xpath, &error) : doc->nodesForXPath(r.xpath, &error))
        << r.xpath;
    ASSERT_TRUE(error) << r.xpath;
    EXPECT_EQ(error->code, r.code) << r.xpath;
    EXPECT_EQ(error->userInfo["error"], r.message) << r.xpath;
  }
  EXPECT_FALSE(doc->nodesForXPath("//[", nullptr));  // no error out is fine
  std::optional<ZXMLError> earlier = ZXMLError{ZXMLErrorDomain, 5, {}};
  EXPECT_TRUE(doc->nodesForXPath("/r", &earlier));
  EXPECT_TRUE(earlier);  // success leaves an earlier error as it was
}

TEST_F(XPathTest, DetachedSubtreeIsQueriedAndLeftDetached) {
  auto top = ZXMLElement::initWithXMLString("<t xmlns:p='urn:p'><p:a>1</p:a><a>2</a></t>", nullptr);
  ASSERT_TRUE(top);
  auto first = top->childAtIndex(0);
  auto attr = ZXMLNode::attributeWithName("k", "v");
  struct Row {
    const ZXMLNode* context;
    std::string xpath;
    std::vector<std::string> values;
  };
  const Row rows[] = {
      {top.get(), "a", {"2"}},
      {top.get(), "/t/*", {"1", "2"}},
      {first.get(), "../a", {"2"}},
      {first.get(), "/", {}},                  // the temporary document is not handed out
      {top.get(), "namespace::*", {"urn:p"}},  // nor its implicit xml declaration
      {attr.get(), "string(.)", {}},           // no element to be the root, still queried
  };
  for (const auto& r : rows) {
    auto found = r.context->nodesForXPath(r.xpath, nullptr);
    ASSERT_TRUE(found) << r.xpath;
    EXPECT_EQ(values(*found), r.values) << r.xpath;
    EXPECT_EQ(r.context->XMLNode()->doc, nullptr) << r.xpath;
    EXPECT_EQ(top->XMLNode()->doc, nullptr) << r.xpath;
    EXPECT_EQ(top->XMLNode()->parent, nullptr) << r.xpath;
  }
}

}  // namespace zellick::test
