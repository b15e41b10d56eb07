#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <libxml/xmlerror.h>

#include "xml/ZXMLDocument.h"
#include "xml/ZXMLNode.h"

namespace zellick::test {

// Blocks allocated through libxml2's allocator and not yet freed (hooks set in main).
long zxmlLiveBlocks();

// Every test must give back exactly the libxml2 blocks it took: ownership bugs show here
// even in the build without LeakSanitizer.
class XmlTest : public ::testing::Test {
 protected:
  // libxml2 keeps the last parse error in a global; it is not ours to count.
  void SetUp() override {
    xmlResetLastError();
    before_ = zxmlLiveBlocks();
  }
  void TearDown() override {
    xmlResetLastError();
    EXPECT_EQ(zxmlLiveBlocks(), before_) << "libxml2 blocks leaked or over-freed";
  }

  static ZXMLDocumentPtr parse(const std::string& xml) {
    auto doc = ZXMLDocument::initWithXMLString(xml, 0, nullptr);
    EXPECT_TRUE(doc) << xml;
    return doc;
  }
  static std::string str(const ZXMLString& s) { return s ? *s : std::string("<nothing>"); }
  // String values of a query's results, sorted.
  static std::vector<std::string> values(const ZXMLNodeList& found) {
    std::vector<std::string> out;
    for (const auto& n : found) out.push_back(str(n->stringValue()));
    std::sort(out.begin(), out.end());
    return out;
  }
  static ZXMLElementPtr element(const ZXMLNodePtr& n) {
    return std::dynamic_pointer_cast<ZXMLElement>(n);
  }

 private:
  long before_ = 0;
};

}  // namespace zellick::test
