// What nearly every test uses.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
#include <vector>

#include "support/allocation.h"
#include "support/forms.h"
#include "support/guarded.h"
#include "support/numeric.h"
#include "support/random.h"
#include "support/rounding.h"
