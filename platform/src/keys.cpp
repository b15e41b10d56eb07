#include <algorithm>

#include "platform/views.h"

namespace zellick {

bool isKeyName(const std::string& key) {
  const std::string bare = key.starts_with("Shift+") ? key.substr(6) : key;
  if (bare.size() == 1) return bare[0] >= 'A' && bare[0] <= 'Z';
  return std::find(std::begin(kNamedKeys), std::end(kNamedKeys), bare) != std::end(kNamedKeys);
}

std::optional<int> questionButtonForKey(const AlertView& alert, const std::string& key) {
  if (alert.buttons.empty()) return std::nullopt;
  if (key == "Return") return 0;
  if (key == "Escape") return static_cast<int>(alert.buttons.size()) - 1;
  if (key.size() != 1) return std::nullopt;
  for (std::size_t i = 0; i < alert.buttons.size(); ++i) {
    const std::string& title = alert.buttons[i];
    if (!title.empty() && std::toupper(static_cast<unsigned char>(title[0])) == key[0])
      return static_cast<int>(i);
  }
  return std::nullopt;
}

}  // namespace zellick
