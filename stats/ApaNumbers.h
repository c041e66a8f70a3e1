#pragma once

#include <cstddef>
#include <string>

// Numbers written as APA writes them in tables and notes. A value that is
// not a number (a standard deviation of one value) is written as a dash,
// never as "nan".
namespace quillstats {

// Fixed decimals, rounded as printf rounds: "12.34", "-0.50".
std::string fixed(double value, int decimals = 2);
// A value that cannot exceed 1 in size (r, beta, R squared, eta squared),
// without a leading zero: ".93", "-.09".
std::string bounded(double value, int decimals = 2);
// A p value: three decimals without a leading zero, "< .001" below that.
std::string pValue(double p);
// "**" below .01, "*" below .05, else nothing.
std::string stars(double p);
// A count with thousands separators: "1,024".
std::string count(size_t n);
// Degrees of freedom: whole ones as they are, Welch's with one decimal.
std::string degrees(double df);

}  // namespace quillstats
