// Catalogue lookups: every text the plug-in shows goes through the language service with the section
// "RX9400".
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "core/CatalogueLiterals.h"
#include "platform/LanguageService.h"

namespace rx9400 {

class Catalogue {
 public:
  explicit Catalogue(LanguageService& language) : language_(language) {}

  /// The text to show for a literal. Throws when the language component fails.
  std::string text(std::string_view literal) { return language_.lookup(catalogue::kSection, literal, {}); }
  /// The same with "%%1" filled by `parameter`.
  std::string text(std::string_view literal, const std::string& parameter) {
    return language_.lookup(catalogue::kSection, literal, {parameter});
  }
  /// A dialog's captions translated in place.
  void translateCaptions(std::vector<std::string>& captions) {
    language_.translateCaptions(catalogue::kSection, captions);
  }

 private:
  LanguageService& language_;
};

}  // namespace rx9400
