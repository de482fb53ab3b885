// Running maxima and sums, over frames and over Gaussians.
#include "scoring/scorer_checks.h"

namespace {

using test::Fold, test::Items, test::Kind, test::Variances, test::withScorers;

template <class Action>
void everyScorer(const Action& action) {
    withScorers<Kind{.items = Items::Frames, .fold = Fold::Max}>(
        action, "LogGaussMax", kelsLogGaussMax1_32f_D2, kelsLogGaussMax_32f_D2, kelsLogGaussMax_32f_D2L,
        kelsLogGaussMax_64f_D2, kelsLogGaussMax_64f_D2L, kelsLogGaussMax_16s32s_D2Sfs, kelsLogGaussMax_16s32s_D2LSfs,
        kelsLogGaussMax_Scaled_16s32f_D2, kelsLogGaussMax_Scaled_16s32f_D2L, kelsLogGaussMax_16s32f_D2,
        kelsLogGaussMax_16s32f_D2L);
    withScorers<Kind{.items = Items::Frames, .variances = Variances::Unit, .fold = Fold::Max}>(
        action, "LogGaussMax IdVar", kelsLogGaussMax_IdVar_32f_D2, kelsLogGaussMax_IdVar_32f_D2L,
        kelsLogGaussMax_IdVar_64f_D2, kelsLogGaussMax_IdVar_64f_D2L, kelsLogGaussMax_IdVar_16s32s_D2Sfs,
        kelsLogGaussMax_IdVar_16s32s_D2LSfs, kelsLogGaussMax_IdVarScaled_16s32f_D2,
        kelsLogGaussMax_IdVarScaled_16s32f_D2L, kelsLogGaussMax_IdVar_16s32f_D2, kelsLogGaussMax_IdVar_16s32f_D2L);
    withScorers<Kind{.items = Items::Frames, .fold = Fold::Max, .low = true}>(
        action, "LogGaussMax Low", kelsLogGaussMax_Low_16s32s_D2Sfs, kelsLogGaussMax_Low_16s32s_D2LSfs,
        kelsLogGaussMax_LowScaled_16s32f_D2, kelsLogGaussMax_LowScaled_16s32f_D2L);
    withScorers<Kind{.items = Items::Frames, .variances = Variances::Unit, .fold = Fold::Max, .low = true}>(
        action, "LogGaussMax IdVar Low", kelsLogGaussMax_IdVarLow_16s32s_D2Sfs, kelsLogGaussMax_IdVarLow_16s32s_D2LSfs,
        kelsLogGaussMax_IdVarLowScaled_16s32f_D2, kelsLogGaussMax_IdVarLowScaled_16s32f_D2L);
    withScorers<Kind{.items = Items::Frames, .fold = Fold::Add}>(
        action, "LogGaussAdd", kelsLogGaussAdd1_32f_D2, kelsLogGaussAdd_32f_D2, kelsLogGaussAdd_32f_D2L,
        kelsLogGaussAdd_64f_D2, kelsLogGaussAdd_64f_D2L, kelsLogGaussAdd_Scaled_16s32f_D2,
        kelsLogGaussAdd_Scaled_16s32f_D2L, kelsLogGaussAdd_16s32f_D2, kelsLogGaussAdd_16s32f_D2L);
    withScorers<Kind{.items = Items::Frames, .variances = Variances::Unit, .fold = Fold::Add}>(
        action, "LogGaussAdd IdVar", kelsLogGaussAdd_IdVar_32f_D2, kelsLogGaussAdd_IdVar_32f_D2L,
        kelsLogGaussAdd_IdVar_64f_D2, kelsLogGaussAdd_IdVar_64f_D2L, kelsLogGaussAdd_IdVarScaled_16s32f_D2,
        kelsLogGaussAdd_IdVarScaled_16s32f_D2L, kelsLogGaussAdd_IdVar_16s32f_D2, kelsLogGaussAdd_IdVar_16s32f_D2L);
    withScorers<Kind{.items = Items::Frames, .fold = Fold::Add, .low = true}>(
        action, "LogGaussAdd Low", kelsLogGaussAdd_LowScaled_16s32f_D2, kelsLogGaussAdd_LowScaled_16s32f_D2L);
    withScorers<Kind{.items = Items::Frames, .variances = Variances::Unit, .fold = Fold::Add, .low = true}>(
        action, "LogGaussAdd IdVar Low", kelsLogGaussAdd_IdVarLowScaled_16s32f_D2,
        kelsLogGaussAdd_IdVarLowScaled_16s32f_D2L);
    withScorers<Kind{.items = Items::Gaussians, .fold = Fold::Max}>(
        action, "LogGaussMaxMultiMix", kelsLogGaussMaxMultiMix_32f_D2, kelsLogGaussMaxMultiMix_32f_D2L,
        kelsLogGaussMaxMultiMix_64f_D2, kelsLogGaussMaxMultiMix_64f_D2L, kelsLogGaussMaxMultiMix_16s32f_D2,
        kelsLogGaussMaxMultiMix_16s32f_D2L, kelsLogGaussMaxMultiMix_Scaled_16s32f_D2,
        kelsLogGaussMaxMultiMix_Scaled_16s32f_D2L, kelsLogGaussMaxMultiMix_16s32s_D2Sfs,
        kelsLogGaussMaxMultiMix_16s32s_D2LSfs);
    withScorers<Kind{.items = Items::Gaussians, .fold = Fold::Max, .low = true}>(
        action, "LogGaussMaxMultiMix Low", kelsLogGaussMaxMultiMix_LowScaled_16s32f_D2,
        kelsLogGaussMaxMultiMix_LowScaled_16s32f_D2L, kelsLogGaussMaxMultiMix_Low_16s32s_D2Sfs,
        kelsLogGaussMaxMultiMix_Low_16s32s_D2LSfs);
    withScorers<Kind{.items = Items::Gaussians, .fold = Fold::Add}>(action, "LogGaussAdd", kelsLogGaussAdd2_32f_D2);
    withScorers<Kind{.items = Items::Gaussians, .fold = Fold::Add}>(
        action, "LogGaussAddMultiMix", kelsLogGaussAddMultiMix_32f_D2, kelsLogGaussAddMultiMix_32f_D2L,
        kelsLogGaussAddMultiMix_64f_D2, kelsLogGaussAddMultiMix_64f_D2L, kelsLogGaussAddMultiMix_Scaled_16s32f_D2,
        kelsLogGaussAddMultiMix_Scaled_16s32f_D2L, kelsLogGaussAddMultiMix_16s32f_D2,
        kelsLogGaussAddMultiMix_16s32f_D2L);
    withScorers<Kind{.items = Items::Gaussians, .fold = Fold::Add, .low = true}>(
        action, "LogGaussAddMultiMix Low", kelsLogGaussAddMultiMix_LowScaled_16s32f_D2,
        kelsLogGaussAddMultiMix_LowScaled_16s32f_D2L);
}

TEST(RunningScores, FollowTheirFormulasInEveryShape) {
    everyScorer(test::followsItsFormula);
}
TEST(RunningScores, KeepFloorsTiesAndNaNOfVectorsAtTheMean) {
    everyScorer(test::keepsFloorsTiesAndNaN);
}

}  // namespace
