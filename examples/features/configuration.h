// A front end's configuration by the names of its fields and of their values.
#ifndef FEATURES_CONFIGURATION_H
#define FEATURES_CONFIGURATION_H

#include <kels.h>

#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace features {

struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// A preset and the fields that are set beside it.  The preset fills the others once the sampling rate is known.
class Choices {
  public:
    void setPreset(std::string_view name);
    std::string_view preset() const;
    // Whether there is such a field.
    static bool isField(std::string_view name);
    // A number, or words for the field's choices, joined by +.  Throws UsageError where that makes no sense.
    void set(std::string_view field, std::string_view value);

    // The rate at which a recording of this rate is looked at.
    int rateFor(int recorded) const;
    // Throws std::runtime_error for a rate that no preset takes.
    KelFeatureConfig at(int rate) const;

    // The presets, the fields and the words for their values, as lines to be read.
    static std::string help();

  private:
    int preset_ = kelFeatKaldiMfcc;
    std::vector<std::pair<std::size_t, double>> fields_;  // places in the table of fields, values
};

}  // namespace features

#endif
