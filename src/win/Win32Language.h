// The language service on Windows: the executive's language component, or the default texts on a
// machine where it is not registered.
#pragma once

#include "platform/LanguageService.h"

namespace rx9400::win {

class ExecutiveLanguage final : public LanguageService {
 public:
  ExecutiveLanguage() = default;
  ~ExecutiveLanguage() override;
  ExecutiveLanguage(const ExecutiveLanguage&) = delete;
  ExecutiveLanguage& operator=(const ExecutiveLanguage&) = delete;

  std::string lookup(std::string_view section, std::string_view literal,
                     const std::vector<std::string>& parameters) override;
  void translateCaptions(std::string_view section, std::vector<std::string>& captions) override;

 private:
  /// The component, created on first use and kept; null when it is not registered.
  struct ILanguageComponent* component();

  struct ILanguageComponent* component_ = nullptr;
  bool created_ = false;
  DefaultLanguage fallback_;
};

}  // namespace rx9400::win
