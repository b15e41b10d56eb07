// Documents: parsing and its failures, the root element, serialisation, version and encoding.
#include "xml_test_support.h"

namespace zellick::test {

class DocumentTest : public XmlTest {};

TEST_F(DocumentTest, ParseFailuresReportCodeMinusOneWithoutMessage) {
  const std::string broken[] = {"", "<a>", "not xml", "<a></b>", std::string("<a>\0</a>", 8)};
  for (const auto& text : broken) {
    std::optional<ZXMLError> docError, elementError;
    EXPECT_FALSE(ZXMLDocument::initWithXMLString(text, 0, &docError)) << text;
    EXPECT_FALSE(ZXMLElement::initWithXMLString(text, &elementError)) << text;
    for (const auto& error : {docError, elementError}) {
      ASSERT_TRUE(error) << text;
      EXPECT_EQ(error->domain, ZXMLErrorDomain) << text;
      EXPECT_EQ(error->code, -1) << text;
      EXPECT_TRUE(error->userInfo.empty()) << text;
    }
  }
  EXPECT_FALSE(ZXMLDocument::initWithXMLString("<a>", 0, nullptr));  // no error out is fine
  std::optional<ZXMLError> error = ZXMLError{ZXMLErrorDomain, 5, {}};
  EXPECT_TRUE(ZXMLDocument::initWithXMLString("<a/>", 0, &error));
  EXPECT_FALSE(error);  // success clears an earlier error
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

}  // namespace zellick::test
