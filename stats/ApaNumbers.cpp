#include "stats/ApaNumbers.h"

#include <cmath>
#include <cstdio>

namespace quillstats {

namespace {
constexpr const char* kDash = "--";  // the tables' markup for an em dash
}

std::string fixed(double value, int decimals) {
  if (!std::isfinite(value)) return kDash;
  char text[64];
  std::snprintf(text, sizeof text, "%.*f", decimals, value);
  return text;
}

std::string bounded(double value, int decimals) {
  std::string s = fixed(value, decimals);
  if (s.starts_with("0.")) s.erase(0, 1);
  else if (s.starts_with("-0.")) s.erase(1, 1);
  return s;
}

std::string pValue(double p) {
  if (!std::isfinite(p)) return kDash;
  if (p < 0.001) return "< .001";
  return bounded(p, 3);
}

std::string stars(double p) {
  if (!std::isfinite(p)) return "";
  if (p < 0.01) return "**";
  if (p < 0.05) return "*";
  return "";
}

std::string count(size_t n) {
  std::string digits = std::to_string(n);
  for (int at = static_cast<int>(digits.size()) - 3; at > 0; at -= 3) digits.insert(static_cast<size_t>(at), ",");
  return digits;
}

std::string degrees(double df) {
  if (std::fabs(df - std::round(df)) < 1e-9) return count(static_cast<size_t>(std::llround(df)));
  return fixed(df, 1);
}

}  // namespace quillstats
