// How the variances of a Gaussian are given.
#pragma once

namespace kels {

enum class VarianceForm { Direct, Inverse };

}  // namespace kels
