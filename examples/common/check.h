// What the library answers, as exceptions whose words a user can look up.
#ifndef COMMON_CHECK_H
#define COMMON_CHECK_H

#include <kels.h>

#include <string>
#include <string_view>

namespace common {

// Its name, number and meaning: "kelStatusSize (-6), a length or count is out of range".
std::string describe(KelStatus status);

// Throws std::runtime_error for an error.  Warnings pass.
void check(KelStatus status, std::string_view what = "the library");

// Releases a C object that a std::unique_ptr owns: std::unique_ptr<KelCdbk_32f, Release<kelsCdbkFree_32f>>.
template <auto Free>
struct Release {
    template <class T>
    void operator()(T* object) const {
        Free(object);
    }
};

}  // namespace common

#endif
