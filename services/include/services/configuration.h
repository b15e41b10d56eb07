#pragma once

#include <optional>
#include <string>

#include "platform/log.h"

namespace zellick {

// The addresses and names the app was built with, written once (configuration.cpp). The three
// server addresses may be overridden from the environment (the variables named here).
struct Configuration {
  std::string makerBaseUrl;       // the maker's web server: catalogue feed, icons, usage records
  std::string catalogueExclude;   // the store id the catalogue feed leaves out ("exc")
  std::string storeWebHost;       // the store's web server, ending in "/"
  std::string storePageUrl;       // this app's page in the store
  std::string supportEmail;       // where feedback goes
  std::string facebookPageUrl;    // the maker's page
  std::string adAppId;            // the app's id at the ad network
  std::string adPrimaryBaseUrl;   // the ad network's web service
  std::string adFallbackBaseUrl;  // and its second host
  std::string appVersion;         // this build's version (the project's version)

  static const Configuration& shipped();
  // The shipped configuration with the server addresses replaced by those given (each may be
  // empty or null: kept). An address that is not a base URL is logged and ignored.
  static Configuration withOverrides(const char* makerUrl, const char* adPrimaryUrl,
                                     const char* adFallbackUrl, Log& log);

  // `url` when it is a base URL an override may give: http or https, a host, ending in "/".
  static std::optional<std::string> baseUrl(const std::string& url);
};

inline constexpr const char* kMakerUrlVariable = "ZELLICK_MAKER_URL";
inline constexpr const char* kAdPrimaryUrlVariable = "ZELLICK_AD_PRIMARY_URL";
inline constexpr const char* kAdFallbackUrlVariable = "ZELLICK_AD_FALLBACK_URL";

}  // namespace zellick
