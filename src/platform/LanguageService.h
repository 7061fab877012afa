// The executive's language component, as the plug-in uses it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace rx9400 {

class LanguageService {
 public:
  virtual ~LanguageService() = default;
  /// The text to show for a catalogue literal of `section`, its placeholders ("%%1", ...) filled from
  /// `parameters`. Throws when the component fails.
  virtual std::string lookup(std::string_view section, std::string_view literal,
                             const std::vector<std::string>& parameters) = 0;
  /// Translates a dialog's control captions in place: each caption that holds a catalogue literal
  /// becomes its text. Throws when the component fails.
  virtual void translateCaptions(std::string_view section, std::vector<std::string>& captions) = 0;
};

/// What a language component without a translation answers: the text after the first "::", with
/// every "%%1" replaced by the first parameter. A text without "::" is not a literal and stays.
std::string defaultCatalogueText(std::string_view literal, const std::vector<std::string>& parameters);

/// The language service of a machine without the executive's component.
class DefaultLanguage final : public LanguageService {
 public:
  std::string lookup(std::string_view section, std::string_view literal,
                     const std::vector<std::string>& parameters) override;
  void translateCaptions(std::string_view section, std::vector<std::string>& captions) override;
};

}  // namespace rx9400
