// Children, attributes and namespaces of every kind of node; look-ups; equality; the strings cache.
#include "xml_test_support.h"

namespace {

class ReadingTest : public XmlTest {};

TEST_F(ReadingTest, ChildlessNodesHaveNoChildrenRatherThanAnEmptyList) {
    auto doc = parse(R"(<r a="1"><e/><t>x</t></r>)");
    auto root = element(doc->rootElement());
    std::vector<ZXMLNodePtr> childless = {root->childAtIndex(0), root->childAtIndex(1)->childAtIndex(0),
                                          ZXMLNode::namespaceWithName("p", "urn:p")};
    for (const auto &n : childless) {
        ASSERT_TRUE(n);
        EXPECT_EQ(n->children(), nullptr) << str(n->name());
        EXPECT_EQ(n->childCount(), 0u);
        EXPECT_EQ(n->childAtIndex(0), nullptr);
    }
    EXPECT_EQ(element(root->childAtIndex(0))->attributes(), nullptr);
    EXPECT_EQ(element(root->childAtIndex(0))->namespaces(), nullptr);
    EXPECT_EQ(root->childCount(), 2u);
    EXPECT_EQ(root->childAtIndex(2), nullptr);
    // An attribute's children are its text.
    EXPECT_EQ(root->attributeForName("a")->childCount(), 1u);
}

TEST_F(ReadingTest, StringValueConcatenatesTextAndKeepsEmptyDistinctFromNothing) {
    auto doc = parse(R"(<r><a>x<b>y</b>z</a><e/><n xmlns:q="urn:q"/></r>)");
    auto root = doc->rootElement();
    EXPECT_EQ(str(root->stringValue()), "xyz");
    EXPECT_EQ(str(root->childAtIndex(0)->childAtIndex(0)->stringValue()), "x");
    ASSERT_TRUE(root->childAtIndex(1)->stringValue());
    EXPECT_EQ(*root->childAtIndex(1)->stringValue(), "");
    EXPECT_EQ(ZXMLNode(nullptr, false).stringValue(), nullptr);
}

TEST_F(ReadingTest, ElementsForNameWithKnownAndUnknownPrefixes) {
    auto doc = parse(R"(<r xmlns:p="urn:p" xmlns:o="urn:p"><p:a/><o:a/><a/><x:a/><x:a/><b/></r>)");
    auto root = element(doc->rootElement());
    struct Row { std::string name; std::size_t count; };
    // A known prefix matches the child bound to the first record in scope for its URI;
    // an unknown prefix matches the qualified name literally.
    const Row rows[] = {{"p:a", 1}, {"o:a", 1}, {"a", 1}, {"x:a", 2}, {"b", 1}, {"zz", 0}};
    for (const auto &r : rows) {
        auto found = root->elementsForName(r.name);
        if (r.count == 0) {
            EXPECT_FALSE(found) << r.name;
        } else {
            ASSERT_TRUE(found) << r.name;
            EXPECT_EQ(found->size(), r.count) << r.name;
        }
    }
    auto local = root->elementsForLocalName("a", "urn:p");
    ASSERT_TRUE(local);
    ASSERT_EQ(local->size(), 1u);
    EXPECT_EQ((*local)[0]->XMLNode(), (*root->elementsForName("o:a"))[0]->XMLNode());
    // A child that rebinds the URI itself is matched against its own declaration.
    auto rebound = parse(R"(<r><a xmlns="urn:n"/><b/></r>)");
    auto found = element(rebound->rootElement())->elementsForLocalName("a", "urn:n");
    ASSERT_TRUE(found);
    EXPECT_EQ(found->size(), 1u);
    EXPECT_FALSE(root->elementsForLocalName("a", "urn:none"));
}

TEST_F(ReadingTest, AttributeAndPrefixLookupsInScope) {
    auto doc = parse(R"(<r xmlns="urn:d" xmlns:p="urn:p"><c p:x="1" y="2" q:z="3"/></r>)");
    auto c = element(doc->rootElement()->childAtIndex(0));
    EXPECT_EQ(str(c->attributeForName("p:x")->stringValue()), "1");
    EXPECT_EQ(str(c->attributeForName("y")->stringValue()), "2");
    EXPECT_EQ(str(c->attributeForName("q:z")->stringValue()), "3");  // undeclared: literal name
    EXPECT_EQ(str(c->attributeForLocalName("x", "urn:p")->stringValue()), "1");
    EXPECT_EQ(c->attributeForName("nope"), nullptr);
    EXPECT_EQ(str(c->resolvePrefixForNamespaceURI("urn:p")), "p");
    EXPECT_EQ(str(c->resolvePrefixForNamespaceURI("urn:d")), "");
    EXPECT_EQ(c->resolvePrefixForNamespaceURI("urn:x"), nullptr);
    auto attrs = c->attributes();
    ASSERT_TRUE(attrs);
    EXPECT_EQ(c->attributeForXMLNode(reinterpret_cast<xmlAttrPtr>((*attrs)[1]->XMLNode())), (*attrs)[1]);
}

TEST_F(ReadingTest, EqualityIsLooseAndAllNodesHashAlike) {
    auto doc = parse("<r><a><x/></a><a><y/></a><a/><b><x/></b></r>");
    auto root = doc->rootElement();
    auto a1 = root->childAtIndex(0), a2 = root->childAtIndex(1), a3 = root->childAtIndex(2), b = root->childAtIndex(3);
    EXPECT_TRUE(a1->isEqual(a2.get()));           // same kind, name, child count
    EXPECT_FALSE(a1->isEqual(a3.get()));          // child counts differ
    EXPECT_FALSE(a1->isEqual(b.get()));           // names differ
    EXPECT_FALSE(a1->isEqual(nullptr));
    ZXMLNode sameNode(a1->XMLNode(), false);
    EXPECT_TRUE(sameNode.isEqual(a1.get()));
    ZXMLNode null1(nullptr, false), null2(nullptr, false);
    EXPECT_TRUE(null1.isEqual(&null2));
    EXPECT_FALSE(null1.isEqual(a3.get()));
    EXPECT_EQ(a1->hash(), b->hash());
    EXPECT_EQ(a1->hash(), ZXMLNode::textWithStringValue("t")->hash());
}

TEST_F(ReadingTest, XMLStringIsTrimmedSerialisation) {
    auto doc = parse("<r><a k='v'>  in  </a>  <b/></r>");
    auto root = doc->rootElement();
    EXPECT_EQ(str(root->childAtIndex(0)->XMLString()), "<a k=\"v\">  in  </a>");
    EXPECT_EQ(str(root->childAtIndex(0)->childAtIndex(0)->XMLString()), "in");
    EXPECT_EQ(str(ZXMLNode::textWithStringValue("\n\t x \n")->XMLString()), "x");
    EXPECT_EQ(ZXMLNode(nullptr, false).XMLString(), nullptr);
}

TEST_F(ReadingTest, StringsCacheSharesOneObjectPerTextPerDocument) {
    auto doc = parse("<apps><app>7</app><app>7</app></apps>");
    auto other = parse("<apps><app>7</app></apps>");
    auto a1 = doc->rootElement()->childAtIndex(0), a2 = doc->rootElement()->childAtIndex(1);
    EXPECT_EQ(a1->name().get(), a2->name().get());
    EXPECT_EQ(a1->stringValue().get(), a2->stringValue().get());
    EXPECT_NE(a1->name().get(), other->rootElement()->childAtIndex(0)->name().get());
    // Detached nodes have no cache: equal text, separate objects.
    auto e1 = ZXMLNode::elementWithName("app"), e2 = ZXMLNode::elementWithName("app");
    EXPECT_NE(e1->name().get(), e2->name().get());
    EXPECT_EQ(*e1->name(), *e2->name());
    // A cached string outlives its document.
    ZXMLString kept = a1->name();
    doc.reset();
    EXPECT_EQ(*kept, "app");
}

TEST_F(ReadingTest, StringsCacheHashIsDjb2OverSignedBytes) {
    struct Row { const char *bytes; std::uint64_t hash; };
    const Row rows[] = {{"", 5381u}, {"a", 5381u * 33 + 'a'}, {"ab", (5381u * 33 + 'a') * 33 + 'b'},
                        // é = C3 A9: signed -61 and -87
                        {"\xc3\xa9", (5381u * 33 - 61) * 33 - 87}};
    for (const auto &r : rows)
        EXPECT_EQ(ZXMLStringsCache::hash(reinterpret_cast<const xmlChar *>(r.bytes)), r.hash) << r.bytes;
}

} // namespace
