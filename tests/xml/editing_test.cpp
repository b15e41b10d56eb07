// Building and editing trees: copies on add, removal ownership, grafting with namespace fix-up.
#include "xml_test_support.h"

namespace {

class EditingTest : public XmlTest {};

TEST_F(EditingTest, FactoriesMakeConsumingNodes) {
    struct Row { ZXMLNodePtr node; std::string xml; int kind; };
    const Row rows[] = {
        {ZXMLNode::elementWithName("a"), "<a/>", ZXMLElementKind},
        {ZXMLNode::elementWithName("a", std::string_view("v&")), "<a>v&amp;</a>", ZXMLElementKind},
        {ZXMLNode::elementWithName("p:a", ZXMLURI{"urn:p"}), "<{urn:p}:a/>", ZXMLElementKind},
        {ZXMLNode::attributeWithName("k", "v"), "k=\"v\"", ZXMLAttributeKind},
        {ZXMLNode::attributeWithName("p:k", "urn:p", "v"), "{urn:p}:k=\"v\"", ZXMLAttributeKind},
        {ZXMLNode::textWithStringValue("t"), "t", ZXMLTextKind},
        {ZXMLNode::namespaceWithName("p", "urn:p"), "xmlns:p=\"urn:p\"", ZXMLNamespaceKind},
        {ZXMLNode::namespaceWithName("", "urn:d"), "xmlns=\"urn:d\"", ZXMLNamespaceKind},
    };
    for (const auto &r : rows) {
        ASSERT_TRUE(r.node) << r.xml;
        EXPECT_TRUE(r.node->shouldFreeXMLNode());
        EXPECT_EQ(r.node->kind(), r.kind) << r.xml;
        EXPECT_EQ(str(r.node->XMLString()), r.xml);
    }
}

TEST_F(EditingTest, AddingCopiesAndTheCallerKeepsItsNode) {
    auto root = ZXMLNode::elementWithName("r");
    auto child = ZXMLNode::elementWithName("c", std::string_view("1"));
    root->addChild(*child);
    child->setStringValue("2");
    EXPECT_EQ(str(root->XMLString()), "<r><c>1</c></r>");
    EXPECT_NE(root->childAtIndex(0)->XMLNode(), child->XMLNode());
    root->addChild(*ZXMLNode::textWithStringValue("a"));
    root->addChild(*ZXMLNode::textWithStringValue("b"));  // merged into the previous text
    root->addChild(*ZXMLNode::attributeWithName("k", "v"));
    root->addChild(*ZXMLNode::namespaceWithName("q", "urn:q"));
    EXPECT_EQ(str(root->XMLString()), "<r xmlns:q=\"urn:q\" k=\"v\"><c>1</c>ab</r>");
}

TEST_F(EditingTest, HandedOutCachesStayAsTheyWereAfterAnEdit) {
    auto doc = parse("<r><a/></r>");
    auto root = doc->rootElement();
    ZXMLNodeListPtr before = root->children();
    root->addChild(*ZXMLNode::elementWithName("b"));
    EXPECT_EQ(before->size(), 1u);
    EXPECT_EQ(root->children()->size(), 2u);
    EXPECT_EQ(str((*before)[0]->name()), "a");
}

TEST_F(EditingTest, RemovingBorrowedAndConsumedChildren) {
    auto doc = parse("<r xmlns:p='urn:p'><p:a><b/></p:a><c/><d/></r>");
    auto root = doc->rootElement();
    ZXMLNodePtr borrowed = root->childAtIndex(1);
    root->removeChild(*borrowed);  // freed at once
    EXPECT_EQ(borrowed->XMLNode(), nullptr);
    EXPECT_EQ(borrowed->kind(), ZXMLInvalidKind);

    ZXMLNodePtr consumed = root->childAtIndex(0);
    consumed->setShouldFreeXMLNode(true);
    root->removeChild(*consumed);
    EXPECT_EQ(str(doc->rootElement()->XMLString()), "<r xmlns:p=\"urn:p\"><d/></r>");
    // The removed node no longer depends on the document or its declarations.
    doc.reset();
    EXPECT_EQ(str(consumed->XMLString()), "<p:a xmlns:p=\"urn:p\"><b/></p:a>");
    EXPECT_EQ(consumed->XMLNode()->doc, nullptr);

    // Something that is not a child is left alone.
    auto other = ZXMLNode::elementWithName("x");
    auto stranger = ZXMLNode::elementWithName("y");
    other->removeChild(*stranger);
    EXPECT_EQ(str(stranger->XMLString()), "<y/>");
}

TEST_F(EditingTest, GraftingResolvesPlaceholdersDeclaredInScope) {
    struct Row { std::string tree, expected; };
    const Row rows[] = {
        // declared with prefix q: local name in that namespace
        {"<r xmlns:q='urn:p'><s/></r>", "<s><q:a/></s>"},
        // declared as default namespace
        {"<r xmlns='urn:p'><s/></r>", "<s><a/></s>"},
        // not declared: the placeholder stays
        {"<r xmlns:q='urn:other'><s/></r>", "<s><{urn:p}:a/></s>"},
    };
    for (const auto &r : rows) {
        auto doc = parse(r.tree);
        auto s = element(doc->rootElement()->childAtIndex(0));
        s->addChild(*ZXMLNode::elementWithName("p:a", ZXMLURI{"urn:p"}));
        EXPECT_EQ(str(s->XMLString()), r.expected) << r.tree;
        const bool resolved = r.expected.find('{') == std::string::npos;
        EXPECT_EQ(str(s->childAtIndex(0)->URI()), resolved ? "urn:p" : "<nothing>") << r.tree;
    }
}

TEST_F(EditingTest, GraftingDropsRedundantDeclarationsAndRepointsTheirUsers) {
    auto doc = parse("<r xmlns:p='urn:p' xmlns:q='urn:q'/>");
    auto root = doc->rootElement();
    auto piece = ZXMLElement::initWithXMLString(
        "<p:s xmlns:p='urn:p' xmlns:q='urn:other' xmlns:z='urn:p'><p:t p:k='1'/></p:s>", nullptr);
    ASSERT_TRUE(piece);
    root->addChild(*piece);
    // Same prefix and URI: dropped. Same prefix, other URI, or other prefix: kept.
    EXPECT_EQ(str(root->childAtIndex(0)->XMLString()),
              "<p:s xmlns:q=\"urn:other\" xmlns:z=\"urn:p\"><p:t p:k=\"1\"/></p:s>");
    auto t = root->childAtIndex(0)->childAtIndex(0);
    auto rootNs = element(root)->namespaces();
    EXPECT_EQ(reinterpret_cast<xmlNsPtr>((*rootNs)[0]->XMLNode()), t->XMLNode()->ns);
    EXPECT_EQ(reinterpret_cast<xmlNsPtr>((*rootNs)[0]->XMLNode()), t->XMLNode()->properties->ns);
    // The original piece is untouched.
    EXPECT_NE(str(piece->XMLString()).find("xmlns:p"), std::string::npos);
}

TEST_F(EditingTest, AttributesAreNeverReplacedAndTheirNamespacesAreDeclared) {
    auto doc = parse("<r k='old'/>");
    auto root = doc->rootElement();
    root->addAttribute(*ZXMLNode::attributeWithName("k", "new"));
    EXPECT_EQ(str(root->attributeForName("k")->stringValue()), "old");

    auto source = parse("<s xmlns:p='urn:p' p:a='1'/>");
    root->addAttribute(*element(source->rootElement())->attributeForName("p:a"));
    root->addAttribute(*element(source->rootElement())->attributeForName("p:a"));
    source.reset();
    EXPECT_EQ(str(root->XMLString()), "<r xmlns:p=\"urn:p\" k=\"old\" p:a=\"1\"/>");

    root->addAttribute(*ZXMLNode::textWithStringValue("not an attribute"));
    EXPECT_EQ(root->attributes()->size(), 2u);
}

TEST_F(EditingTest, NamespaceDeclarationEdits) {
    auto root = ZXMLNode::elementWithName("r");
    root->addChild(*ZXMLNode::elementWithName("p:x"));
    EXPECT_EQ(root->childAtIndex(0)->XMLNode()->ns, nullptr);
    root->addNamespace(*ZXMLNode::namespaceWithName("p", "urn:p"));
    EXPECT_EQ(str(root->childAtIndex(0)->URI()), "urn:p");
    EXPECT_EQ(str(root->childAtIndex(0)->name()), "p:x");

    // Replacing the declarations keeps their users on a live record.
    root->setNamespaces({ZXMLNode::namespaceWithName("q", "urn:q")});
    EXPECT_EQ(str(root->XMLString()), "<r xmlns:q=\"urn:q\" xmlns:p=\"urn:p\"><p:x/></r>");
    root->setNamespaces({});
    EXPECT_EQ(str(root->childAtIndex(0)->URI()), "urn:p");

    auto ns = (*root->namespaces())[0];
    ns->setStringValue("urn:changed");
    EXPECT_EQ(str(root->childAtIndex(0)->URI()), "urn:changed");
}

} // namespace
