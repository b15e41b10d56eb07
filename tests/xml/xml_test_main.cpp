// Counts libxml2 blocks so tests can check that each one hands back what it allocated.
#include <cstdlib>
#include <cstring>

#include <libxml/parser.h>
#include <libxml/xmlmemory.h>

#include "xml_test_support.h"

namespace {
long g_live = 0;
void* counted(void* p) {
  if (p) ++g_live;
  return p;
}
void countedFree(void* p) {
  if (p) --g_live;
  std::free(p);
}
void* countedMalloc(size_t n) { return counted(std::malloc(n)); }
// Growing a block keeps the count; only a fresh one adds to it.
void* countedRealloc(void* p, size_t n) { return p ? std::realloc(p, n) : counted(std::malloc(n)); }
char* countedStrdup(const char* s) {
  auto* p = static_cast<char*>(countedMalloc(std::strlen(s) + 1));
  return p ? std::strcpy(p, s) : nullptr;
}
void quiet(void*, const char*, ...) {}
void quietLog(const std::string&) {}
}  // namespace

long zellick::test::zxmlLiveBlocks() { return g_live; }

int main(int argc, char** argv) {
  xmlMemSetup(countedFree, countedMalloc, countedRealloc, countedStrdup);
  xmlSetGenericErrorFunc(nullptr, quiet);
  ZXMLSetLogHandler(quietLog);
  // libxml2 sets up some globals lazily on first use; do that before any test counts.
  if (auto doc = ZXMLDocument::initWithXMLString("<r xmlns:p='urn:p'><p:a/></r>", 0, nullptr))
    doc->nodesForXPath("//p:a|//namespace::*", nullptr);
  ::testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
