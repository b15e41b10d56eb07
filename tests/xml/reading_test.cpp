// Children and text of every kind of node; element look-ups; equality; the strings cache.
#include "xml_test_support.h"

namespace zellick::test {

class ReadingTest : public XmlTest {};

TEST_F(ReadingTest, ChildlessNodesHaveNothingAndEmptyTextIsNotNothing) {
  auto doc = parse(R"(<r a="1"><e/><t>x<b>y</b>z</t></r>)");
  auto root = doc->rootElement();
  auto e = element(root->childAtIndex(0));
  auto t = root->childAtIndex(1);
  ASSERT_TRUE(e && t);
  const ZXMLNodePtr childless[] = {e, t->childAtIndex(0),
                                   ZXMLNode::namespaceWithName("p", "urn:p")};
  for (const auto& n : childless) {
    EXPECT_EQ(n->children(), nullptr) << n->description();
    EXPECT_EQ(n->childCount(), 0u) << n->description();
    EXPECT_EQ(n->childAtIndex(0), nullptr) << n->description();
  }
  EXPECT_EQ(e->attributes(), nullptr);
  EXPECT_EQ(e->namespaces(), nullptr);
  EXPECT_EQ(root->childAtIndex(2), nullptr);
  EXPECT_EQ(root->attributeForName("a")->childCount(), 1u);  // an attribute's child is its text
  EXPECT_EQ(str(t->stringValue()), "xyz");
  EXPECT_EQ(str(e->stringValue()), "");
  EXPECT_EQ(ZXMLNode(nullptr, false).stringValue(), nullptr);
}

TEST_F(ReadingTest, ElementsForNameWithKnownAndUnknownPrefixes) {
  auto doc = parse(R"(<r xmlns:p="urn:p" xmlns:o="urn:p"><p:a/><o:a/><a/><x:a/><x:a/><b/></r>)");
  auto root = doc->rootElement();
  auto names = [](const std::optional<ZXMLElementList>& found) {
    std::string out = found ? "" : "<nothing>";  // none is nothing, never an empty list
    for (const auto& e : found.value_or(ZXMLElementList{})) out += str(e->name()) + ";";
    return out;
  };
  // A known prefix matches by URI, i.e. the children bound to the first record in scope
  // for it (so o:a finds p:a); an unknown prefix matches the qualified name literally.
  const std::pair<std::string, std::string> rows[] = {{"p:a", "p:a;"}, {"o:a", "p:a;"},
                                                      {"a", "a;"},     {"x:a", "x:a;x:a;"},
                                                      {"b", "b;"},     {"zz", "<nothing>"}};
  for (const auto& [name, found] : rows)
    EXPECT_EQ(names(root->elementsForName(name)), found) << name;
  EXPECT_EQ(names(root->elementsForLocalName("a", "urn:p")), "p:a;");
  EXPECT_EQ(names(root->elementsForLocalName("a", "urn:none")), "<nothing>");
  // A child that rebinds the URI itself is matched against its own declaration.
  auto rebound = parse(R"(<r><a xmlns="urn:n"/><b/></r>)");
  EXPECT_EQ(names(rebound->rootElement()->elementsForLocalName("a", "urn:n")), "a;");
}

TEST_F(ReadingTest, EqualityIsLooseAndAllNodesHashAlike) {
  auto doc = parse("<r><a><x/></a><a><y/></a><a/><b><x/></b></r>");
  auto root = doc->rootElement();
  auto a = root->childAtIndex(0), b = root->childAtIndex(3);
  ZXMLNode null1(nullptr, false), null2(nullptr, false);
  ZXMLNodePtr textElement = ZXMLNode::elementWithName("text"),
              textNode = ZXMLNode::textWithStringValue("t");
  EXPECT_TRUE(a->isEqual(root->childAtIndex(1).get()));   // same kind, name and child count
  EXPECT_FALSE(a->isEqual(root->childAtIndex(2).get()));  // child counts differ
  EXPECT_FALSE(a->isEqual(b.get()));                      // names differ
  EXPECT_FALSE(a->isEqual(nullptr));
  EXPECT_FALSE(textElement->isEqual(textNode.get()));  // kinds differ
  EXPECT_TRUE(null1.isEqual(&null2));
  EXPECT_EQ(a->hash(), b->hash());
  EXPECT_EQ(a->hash(), textNode->hash());
}

TEST_F(ReadingTest, XMLStringIsTrimmedSerialisation) {
  auto doc = parse("<r><a k='v'>  in  </a>  <b/></r>");
  auto a = doc->rootElement()->childAtIndex(0);
  EXPECT_EQ(str(a->XMLString()), "<a k=\"v\">  in  </a>");
  EXPECT_EQ(str(a->childAtIndex(0)->XMLString()), "in");
  EXPECT_EQ(ZXMLNode(nullptr, false).XMLString(), nullptr);
  // Text serialises as raw UTF-8, so Unicode white space reaches both ends.
  const std::pair<std::string, std::string> rows[] = {
      {"\n\t x \n", "x"},
      {"\xC2\xA0x\xC2\xA0", "x"},                      // no-break space
      {"\xE2\x80\xA8\xC2\x85x y\xE2\x80\xA9", "x y"},  // line and paragraph separators, NEL
      {"\xE3\x80\x80x\xE3\x80\x80y\xE2\x80\x8A", "x\xE3\x80\x80y"},  // inner ideographic kept
      {"\x85x\xA0", "\x85x\xA0"},  // stray continuation bytes are not NEL/NBSP
      {"\xE0\x80\xA0x\xC0\xA0", "\xE0\x80\xA0x\xC0\xA0"},  // overlong spaces are malformed
  };
  for (const auto& [text, xml] : rows)
    EXPECT_EQ(str(ZXMLNode::textWithStringValue(text)->XMLString()), xml) << text;
}

TEST_F(ReadingTest, StringsCacheSharesOneObjectPerTextPerDocument) {
  auto doc = parse("<apps><app>7</app><app>7</app></apps>");
  auto other = parse("<apps><app>7</app></apps>");
  auto a1 = doc->rootElement()->childAtIndex(0), a2 = doc->rootElement()->childAtIndex(1);
  EXPECT_EQ(a1->name().get(), a2->name().get());
  EXPECT_EQ(a1->stringValue().get(), a2->stringValue().get());
  EXPECT_NE(a1->name().get(), other->rootElement()->childAtIndex(0)->name().get());
  // A cached string outlives its document.
  ZXMLString kept = a1->name();
  doc.reset();
  EXPECT_EQ(*kept, "app");
}

}  // namespace zellick::test
