// The language component's default behaviour.
#include "core/Catalogue.h"

namespace rx9400 {

std::string defaultCatalogueText(std::string_view literal, const std::vector<std::string>& parameters) {
  const auto separator = literal.find("::");
  if (separator == std::string_view::npos) return std::string(literal);
  std::string text(literal.substr(separator + 2));
  const std::string placeholder = "%%1";
  const std::string value = parameters.empty() ? std::string() : parameters.front();
  for (auto at = text.find(placeholder); at != std::string::npos;
       at = text.find(placeholder, at + value.size())) {
    text.replace(at, placeholder.size(), value);
  }
  return text;
}

std::string DefaultLanguage::lookup(std::string_view, std::string_view literal,
                                    const std::vector<std::string>& parameters) {
  return defaultCatalogueText(literal, parameters);
}

void DefaultLanguage::translateCaptions(std::string_view, std::vector<std::string>& captions) {
  for (std::string& caption : captions) caption = defaultCatalogueText(caption, {});
}

}  // namespace rx9400
