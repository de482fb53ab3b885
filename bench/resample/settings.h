// The filters of the table in kels/resample.h.
#pragma once

struct ResampleSetting {
    const char* name;
    float window;
    int nStep;
    float rollf, alpha;
};
inline constexpr ResampleSetting kFast{"fast", 46, 128, 0.86f, 6};
inline constexpr ResampleSetting kSpeech{"speech", 94, 512, 0.90f, 9};
inline constexpr ResampleSetting kLikeSoxr{"LikeSoxr", 190, 1024, 0.956f, 13};
inline constexpr ResampleSetting kLikeSpeex{"LikeSpeex", 254, 1024, 0.974f, 11.3f};
inline constexpr ResampleSetting kLikeSrc{"LikeSrc", 298, 2048, 0.969f, 15.5f};
