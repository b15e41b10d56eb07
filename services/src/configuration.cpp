#include "services/configuration.h"

namespace zellick {

const Configuration& Configuration::shipped() {
  static const Configuration shipped{
      "https://www.orvanta.example/",
      "498765431",
      "https://apps.store.example/",
      "https://apps.store.example/ca/app/zellick/id512345678?mt=8",
      "support@orvanta.example",
      "https://social.example/OrvantaApps",
      "3f2b9c1e-7a4d-4e8b-9c2f-1d5e6a7b8c9d",
      "https://connect.adnetwork.example/",
      "https://connect-backup.adnetwork.example/",
      ZELLICK_VERSION,
  };
  return shipped;
}

Configuration Configuration::withOverrides(const char* makerUrl, const char* adPrimaryUrl,
                                           const char* adFallbackUrl, Log& log) {
  Configuration c = shipped();
  const auto take = [&log](const char* given, const char* variable, std::string& into) {
    if (!given || !*given) return;
    if (auto url = baseUrl(given)) {
      into = *url;
    } else {
      log.line(std::string(variable) + " is not a base URL ending in \"/\"; using " + into);
    }
  };
  take(makerUrl, kMakerUrlVariable, c.makerBaseUrl);
  take(adPrimaryUrl, kAdPrimaryUrlVariable, c.adPrimaryBaseUrl);
  take(adFallbackUrl, kAdFallbackUrlVariable, c.adFallbackBaseUrl);
  return c;
}

std::optional<std::string> Configuration::baseUrl(const std::string& url) {
  for (const char* scheme : {"http://", "https://"}) {
    const std::string s = scheme;
    if (url.rfind(s, 0) == 0 && url.size() > s.size() + 1 && url.back() == '/' &&
        url.find_first_of(" \t\r\n\"<>\\") == std::string::npos && url[s.size()] != '/')
      return url;
  }
  return std::nullopt;
}

}  // namespace zellick
