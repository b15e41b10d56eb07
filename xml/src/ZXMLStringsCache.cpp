#include "xml/ZXMLStringsCache.h"

std::uint64_t ZXMLStringsCache::hash(const xmlChar* bytes) {
  std::uint64_t h = 5381;
  if (!bytes) return h;
  for (const xmlChar* p = bytes; *p; ++p) {
    // Bytes count as signed, so UTF-8 continuation bytes subtract; wrap-around is intended.
    const auto b = static_cast<std::int64_t>(static_cast<signed char>(*p));
    h = h * 33 + static_cast<std::uint64_t>(b);
  }
  return h;
}

ZXMLStringsCache::~ZXMLStringsCache() = default;

std::size_t ZXMLStringsCache::find(const xmlChar* bytes, std::uint64_t h) const {
  const std::size_t mask = slots_.size() - 1;
  for (std::size_t i = static_cast<std::size_t>(h) & mask;; i = (i + 1) & mask) {
    const Slot& slot = slots_[i];
    // Equal keys: the same pointer, or the same bytes.
    if (!slot.key || (slot.hash == h && (slot.key == bytes || xmlStrcmp(slot.key, bytes) == 0)))
      return i;
  }
}

void ZXMLStringsCache::grow() {
  std::vector<Slot> old = std::move(slots_);
  slots_ = std::vector<Slot>(old.empty() ? 1024 : old.size() * 2);
  const std::size_t mask = slots_.size() - 1;
  for (Slot& slot : old) {
    if (!slot.key) continue;
    std::size_t i = static_cast<std::size_t>(slot.hash) & mask;
    while (slots_[i].key) i = (i + 1) & mask;
    slots_[i] = std::move(slot);
  }
}

ZXMLString ZXMLStringsCache::lookup(const xmlChar* bytes) const {
  if (!bytes || slots_.empty()) return nullptr;
  const Slot& slot = slots_[find(bytes, hash(bytes))];
  return slot.key ? slot.value : nullptr;
}

ZXMLString ZXMLStringsCache::intern(const xmlChar* bytes) {
  if (!bytes) return nullptr;
  if ((count_ + 1) * 2 > slots_.size()) grow();
  const std::uint64_t h = hash(bytes);
  Slot& slot = slots_[find(bytes, h)];
  if (slot.key) return slot.value;
  slot.value = std::make_shared<const std::string>(reinterpret_cast<const char*>(bytes));
  slot.hash = h;
  slot.key = reinterpret_cast<const xmlChar*>(slot.value->c_str());
  ++count_;
  return slot.value;
}

ZXMLStringsCache* ZXMLStringsCache::of(const xmlDoc* doc) {
  return doc ? static_cast<ZXMLStringsCache*>(doc->_private) : nullptr;
}

ZXMLStringsCache* ZXMLStringsCache::attach(xmlDocPtr doc) {
  if (!doc) return nullptr;
  if (!doc->_private) doc->_private = new ZXMLStringsCache();
  return static_cast<ZXMLStringsCache*>(doc->_private);
}

void ZXMLStringsCache::detach(xmlDocPtr doc) {
  if (!doc || !doc->_private) return;
  delete static_cast<ZXMLStringsCache*>(doc->_private);
  doc->_private = nullptr;
}
