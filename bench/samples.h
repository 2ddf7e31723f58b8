// Measurements as rows of a table, each beside its limit.
#pragma once

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

namespace skavlo::bench {

class Samples {
  public:
    void add(double value) { values_.push_back(value); }
    [[nodiscard]] std::size_t count() const { return values_.size(); }
    [[nodiscard]] double minimum() const { return quantile(0); }
    [[nodiscard]] double median() const { return quantile(0.5); }
    // 0 to 1; 0 without samples.
    [[nodiscard]] double quantile(double share) const {
        if (values_.empty()) return 0;
        std::vector<double> sorted = values_;
        std::sort(sorted.begin(), sorted.end());
        const auto last = static_cast<double>(sorted.size() - 1);
        return sorted[static_cast<std::size_t>(share * last + 0.5)];
    }

  private:
    std::vector<double> values_;
};

inline void printRow(const std::string& what, double value, double limit, const char* unit) {
    std::printf("%-66s %9.3f %9.3f %-3s %s\n", what.c_str(), value, limit, unit,
                value <= limit ? "within" : "BEYOND");
    std::fflush(stdout);
}

}  // namespace skavlo::bench
