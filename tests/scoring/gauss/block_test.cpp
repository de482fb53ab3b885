// Frames under one Gaussian, and one vector under many Gaussians.
#include "scoring/scorer_checks.h"

namespace {

using test::Items, test::Kind, test::Variances, test::withScorers;

template <class Action>
void everyScorer(const Action& action) {
    withScorers<Kind{.items = Items::Frames}>(
        action, "LogGauss", kelsLogGauss_64f_D2, kelsLogGauss_64f_D2L, kelsLogGauss1_64f_D2, kelsLogGauss1_64f_D2L,
        kelsLogGauss_32f_D2, kelsLogGauss_32f_D2L, kelsLogGauss1_32f_D2, kelsLogGauss1_32f_D2L,
        kelsLogGauss_16s32s_D2Sfs, kelsLogGauss_16s32s_D2LSfs, kelsLogGauss_Scaled_16s32f_D2,
        kelsLogGauss_Scaled_16s32f_D2L, kelsLogGauss_16s32f_D2, kelsLogGauss_16s32f_D2L);
    withScorers<Kind{.items = Items::Frames, .variances = Variances::Unit}>(
        action, "LogGauss IdVar", kelsLogGauss_IdVar_64f_D2, kelsLogGauss_IdVar_64f_D2L, kelsLogGauss_IdVar_32f_D2,
        kelsLogGauss_IdVar_32f_D2L, kelsLogGauss_IdVar_16s32s_D2Sfs, kelsLogGauss_IdVar_16s32s_D2LSfs,
        kelsLogGauss_IdVarScaled_16s32f_D2, kelsLogGauss_IdVarScaled_16s32f_D2L, kelsLogGauss_IdVar_16s32f_D2,
        kelsLogGauss_IdVar_16s32f_D2L);
    withScorers<Kind{.items = Items::Frames, .low = true}>(
        action, "LogGauss Low", kelsLogGauss_Low_16s32s_D2Sfs, kelsLogGauss_Low_16s32s_D2LSfs,
        kelsLogGauss_LowScaled_16s32f_D2, kelsLogGauss_LowScaled_16s32f_D2L, kelsLogGauss_Low_16s32f_D2,
        kelsLogGauss_Low_16s32f_D2L);
    withScorers<Kind{.items = Items::Frames, .variances = Variances::Unit, .low = true}>(
        action, "LogGauss IdVar Low", kelsLogGauss_IdVarLow_16s32s_D2Sfs, kelsLogGauss_IdVarLow_16s32s_D2LSfs,
        kelsLogGauss_IdVarLowScaled_16s32f_D2, kelsLogGauss_IdVarLowScaled_16s32f_D2L, kelsLogGauss_IdVarLow_16s32f_D2,
        kelsLogGauss_IdVarLow_16s32f_D2L);
    withScorers<Kind{.items = Items::Frames, .distance = true}>(
        action, "MahDist", kelsMahDist_64f_D2, kelsMahDist_64f_D2L, kelsMahDist_32f_D2, kelsMahDist_32f_D2L,
        kelsMahDist1_64f_D2, kelsMahDist1_64f_D2L, kelsMahDist1_32f_D2, kelsMahDist1_32f_D2L);
    withScorers<Kind{.items = Items::Gaussians}>(
        action, "LogGaussMultiMix", kelsLogGaussMultiMix_64f_D2, kelsLogGaussMultiMix_64f_D2L,
        kelsLogGaussMultiMix_32f_D2, kelsLogGaussMultiMix_32f_D2L, kelsLogGaussMultiMix_16s32s_D2Sfs,
        kelsLogGaussMultiMix_16s32s_D2LSfs, kelsLogGaussMultiMix_Scaled_16s32f_D2,
        kelsLogGaussMultiMix_Scaled_16s32f_D2L, kelsLogGaussMultiMix_16s32f_D2, kelsLogGaussMultiMix_16s32f_D2L);
    withScorers<Kind{.items = Items::Gaussians}>(action, "LogGauss", kelsLogGauss2_64f_D2, kelsLogGauss2_64f_D2L,
                                                 kelsLogGauss2_32f_D2, kelsLogGauss2_32f_D2L);
    withScorers<Kind{.items = Items::Gaussians, .low = true}>(
        action, "LogGaussMultiMix Low", kelsLogGaussMultiMix_Low_16s32s_D2Sfs, kelsLogGaussMultiMix_Low_16s32s_D2LSfs);
    withScorers<Kind{.items = Items::Gaussians, .distance = true}>(
        action, "MahDistMultiMix", kelsMahDistMultiMix_64f_D2, kelsMahDistMultiMix_64f_D2L, kelsMahDistMultiMix_32f_D2,
        kelsMahDistMultiMix_32f_D2L);
    withScorers<Kind{.items = Items::Gaussians, .distance = true}>(
        action, "MahDist", kelsMahDist2_64f_D2, kelsMahDist2_64f_D2L, kelsMahDist2_32f_D2, kelsMahDist2_32f_D2L);
}

TEST(BlockScores, FollowTheirFormulasInEveryShape) {
    everyScorer(test::followsItsFormula);
}
TEST(BlockScores, KeepFloorsTiesAndNaNOfVectorsAtTheMean) {
    everyScorer(test::keepsFloorsTiesAndNaN);
}

}  // namespace
