#include "text/pattern.h"

#include <unicode/regex.h>

#include <cstdlib>

#include "text/icu_strings.h"

namespace callmonitor {
namespace {

// ICU counts one step for about every 10,000 inner operations. Labels and addresses that people
// write stay below one; the limit stops a label built to make a search quadratic.
constexpr std::int32_t stepLimit = 100;

}  // namespace

// The matcher keeps scratch memory between searches; the process has one thread.
struct Pattern::Compiled {
  explicit Compiled(const icu::UnicodeString& expression) : matcher(expression, 0, status) {}
  UErrorCode status = U_ZERO_ERROR;
  icu::RegexMatcher matcher;
};

Pattern::Pattern(std::string_view expression)
    : compiled_(std::make_unique<Compiled>(icuString(expression))) {
  compiled_->matcher.setTimeLimit(stepLimit, compiled_->status);
  if (U_FAILURE(compiled_->status)) std::abort();
}

Pattern::~Pattern() = default;

bool Pattern::foundIn(std::string_view text) const {
  const icu::UnicodeString unicode = icuString(text);
  compiled_->matcher.reset(unicode);
  UErrorCode status = U_ZERO_ERROR;
  return compiled_->matcher.find(status) != 0 && U_SUCCESS(status);
}

std::optional<std::string> Pattern::firstGroup(std::string_view text) const {
  const icu::UnicodeString unicode = icuString(text);
  icu::RegexMatcher& matcher = compiled_->matcher;
  matcher.reset(unicode);
  UErrorCode status = U_ZERO_ERROR;
  if (matcher.find(status) == 0 || U_FAILURE(status)) return std::nullopt;
  for (std::int32_t group = 1; group <= matcher.groupCount(); ++group) {
    const std::int32_t start = matcher.start(group, status);
    if (U_FAILURE(status)) return std::nullopt;
    if (start < 0) continue;
    std::string result;
    matcher.group(group, status).toUTF8String(result);
    return U_SUCCESS(status) ? std::optional(result) : std::nullopt;
  }
  return std::nullopt;
}

std::string Pattern::removedFrom(std::string_view text) const {
  const icu::UnicodeString unicode = icuString(text);
  compiled_->matcher.reset(unicode);
  UErrorCode status = U_ZERO_ERROR;
  const icu::UnicodeString kept = compiled_->matcher.replaceAll(icu::UnicodeString(), status);
  if (U_FAILURE(status)) return std::string(text);
  std::string result;
  kept.toUTF8String(result);
  return result;
}

}  // namespace callmonitor
