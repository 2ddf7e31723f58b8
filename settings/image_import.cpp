#include "settings/image_import.h"

namespace skavlo {

std::vector<double> shrinkFactors() {
    constexpr double kFirst = 0.9;
    constexpr double kStep = 0.1;
    std::vector<double> factors;
    double factor = kFirst;
    while (factor > kStep) {
        factors.push_back(factor);
        factor -= kStep;
    }
    return factors;
}

}  // namespace skavlo
