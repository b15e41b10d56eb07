#include "platform/property_list.h"

#include <plist/plist.h>

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>

namespace zellick {

namespace {

// Property-list dates count from 2001-01-01 UTC.
constexpr double kPlistEpoch = 978307200;
// Deeper nesting than any list the app keeps.
constexpr int kMaxDepth = 32;

struct PlistFree {
  void operator()(plist_t p) const { plist_free(p); }
};
struct CharsFree {
  void operator()(char* p) const { std::free(p); }
};

std::optional<DefaultsValue> toValue(plist_t node, int depth) {
  if (depth > kMaxDepth) return std::nullopt;
  switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
      uint8_t b = 0;
      plist_get_bool_val(node, &b);
      return b != 0;
    }
    case PLIST_UINT:
    case PLIST_UID: {
      uint64_t u = 0;
      if (plist_get_node_type(node) == PLIST_UID) {
        plist_get_uid_val(node, &u);
      } else {
        plist_get_uint_val(node, &u);  // negative integers come as their two's complement
      }
      return static_cast<long long>(u);
    }
    case PLIST_REAL: {
      double d = 0;
      plist_get_real_val(node, &d);
      return d;
    }
    case PLIST_STRING: {
      char* s = nullptr;
      plist_get_string_val(node, &s);
      std::unique_ptr<char, CharsFree> owned(s);
      return std::string(s ? s : "");
    }
    case PLIST_DATA: {
      char* bytes = nullptr;
      uint64_t length = 0;
      plist_get_data_val(node, &bytes, &length);
      std::unique_ptr<char, CharsFree> owned(bytes);
      return std::string(bytes ? bytes : "", bytes ? length : 0);
    }
    case PLIST_DATE: {
      int32_t sec = 0, usec = 0;
      plist_get_date_val(node, &sec, &usec);
      return Date{kPlistEpoch + sec + usec / 1e6};
    }
    case PLIST_ARRAY: {
      DefaultsArray out;
      const uint32_t n = plist_array_get_size(node);
      out.reserve(n);
      for (uint32_t i = 0; i < n; ++i) {
        auto v = toValue(plist_array_get_item(node, i), depth + 1);
        if (!v) return std::nullopt;
        out.push_back(std::move(*v));
      }
      return out;
    }
    case PLIST_DICT: {
      DefaultsDictionary out;
      plist_dict_iter it = nullptr;
      plist_dict_new_iter(node, &it);
      std::unique_ptr<void, decltype(&std::free)> ownedIter(it, &std::free);
      for (;;) {
        char* key = nullptr;
        plist_t value = nullptr;
        plist_dict_next_item(node, it, &key, &value);
        std::unique_ptr<char, CharsFree> ownedKey(key);
        if (!value) break;
        auto v = toValue(value, depth + 1);
        if (!v) return std::nullopt;
        out.insert_or_assign(key ? key : "", std::move(*v));
      }
      return out;
    }
    default: return std::nullopt;
  }
}

}  // namespace

std::optional<DefaultsArray> arrayWithContentsOfFile(const std::string& path,
                                                     std::size_t maxBytes) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return std::nullopt;
  std::string bytes;
  bytes.resize(maxBytes + 1);
  in.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  if (in.bad()) return std::nullopt;
  bytes.resize(static_cast<std::size_t>(in.gcount()));
  if (bytes.empty() || bytes.size() > maxBytes) return std::nullopt;

  plist_t root = nullptr;
  plist_from_memory(bytes.data(), static_cast<uint32_t>(bytes.size()), &root);
  std::unique_ptr<void, PlistFree> owned(root);
  if (!root || plist_get_node_type(root) != PLIST_ARRAY) return std::nullopt;
  auto value = toValue(root, 0);
  if (!value) return std::nullopt;
  return std::get<DefaultsArray>(std::move(*value));
}

}  // namespace zellick
