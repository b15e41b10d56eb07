#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <libxml/tree.h>

// Shared immutable string handed out by the XML layer; nullptr means "nothing".
using ZXMLString = std::shared_ptr<const std::string>;

// Per-document table from the UTF-8 bytes of the tree to one shared string per distinct
// text, so repeated names of a long document share one object. It lives in the libxml2
// document's _private field and is destroyed with the document (ZXMLDocument does both).
class ZXMLStringsCache {
 public:
  ZXMLStringsCache() = default;
  ~ZXMLStringsCache();
  ZXMLStringsCache(const ZXMLStringsCache&) = delete;
  ZXMLStringsCache& operator=(const ZXMLStringsCache&) = delete;

  // djb2 over the bytes up to the terminating 0, each byte taken as signed, in 64-bit
  // unsigned arithmetic. Null hashes as the empty string.
  static std::uint64_t hash(const xmlChar* bytes);

  // The cached string for these bytes, nullptr on a miss or for null bytes.
  ZXMLString lookup(const xmlChar* bytes) const;
  // The cached string, or a new one stored under its own copy of the bytes.
  ZXMLString intern(const xmlChar* bytes);
  std::size_t size() const { return count_; }

  // The cache attached to a document, or nullptr.
  static ZXMLStringsCache* of(const xmlDoc* doc);
  // Creates a cache in doc->_private (no-op when one is there); returns it.
  static ZXMLStringsCache* attach(xmlDocPtr doc);
  // Destroys the document's cache, if any, and clears _private.
  static void detach(xmlDocPtr doc);

 private:
  // Open addressing with linear probing: one flat array, no node per entry. The table owns
  // one copy of each key's bytes: the immutable value string, which the slot's key points
  // into, so an entry costs one allocation instead of two.
  struct Slot {
    std::uint64_t hash = 0;
    const xmlChar* key = nullptr;
    ZXMLString value;
  };
  std::size_t find(const xmlChar* bytes, std::uint64_t h) const;  // slot index, empty or matching
  void grow();

  std::vector<Slot> slots_;
  std::size_t count_ = 0;
};
