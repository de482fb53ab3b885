// Mixtures of Gaussians, and selected components of them.
#include "scoring/scorer_checks.h"

namespace {

using test::Items, test::Kind, test::Variances, test::withScorers;

template <class Action>
void everyScorer(const Action& action) {
    withScorers<Kind{.items = Items::Mixture}>(
        action, "LogGaussMixture", kelsLogGaussMixture_32f_D2, kelsLogGaussMixture_32f_D2L, kelsLogGaussMixture_64f_D2,
        kelsLogGaussMixture_64f_D2L, kelsLogGaussMixture_Scaled_16s32f_D2, kelsLogGaussMixture_Scaled_16s32f_D2L);
    withScorers<Kind{.items = Items::Mixture, .variances = Variances::Unit}>(
        action, "LogGaussMixture IdVar", kelsLogGaussMixture_IdVar_32f_D2, kelsLogGaussMixture_IdVar_32f_D2L,
        kelsLogGaussMixture_IdVar_64f_D2, kelsLogGaussMixture_IdVar_64f_D2L, kelsLogGaussMixture_IdVarScaled_16s32f_D2,
        kelsLogGaussMixture_IdVarScaled_16s32f_D2L);
    withScorers<Kind{.items = Items::Mixture, .low = true}>(action, "LogGaussMixture Low",
                                                            kelsLogGaussMixture_LowScaled_16s32f_D2,
                                                            kelsLogGaussMixture_LowScaled_16s32f_D2L);
    withScorers<Kind{.items = Items::Mixture, .variances = Variances::Unit, .low = true}>(
        action, "LogGaussMixture IdVar Low", kelsLogGaussMixture_IdVarLowScaled_16s32f_D2,
        kelsLogGaussMixture_IdVarLowScaled_16s32f_D2L);
    withScorers<Kind{.items = Items::Selected}>(
        action, "LogGaussMixture Select", kelsLogGaussMixture_Select_32f_D2, kelsLogGaussMixture_Select_32f_D2L,
        kelsLogGaussMixture_SelectScaled_16s32f_D2, kelsLogGaussMixture_SelectScaled_16s32f_D2L);
    withScorers<Kind{.items = Items::Selected, .variances = Variances::Unit}>(
        action, "LogGaussMixture Select IdVar", kelsLogGaussMixture_SelectIdVar_32f_D2,
        kelsLogGaussMixture_SelectIdVar_32f_D2L, kelsLogGaussMixture_SelectIdVarScaled_16s32f_D2,
        kelsLogGaussMixture_SelectIdVarScaled_16s32f_D2L);
}

TEST(Mixtures, FollowTheirFormulasInEveryShape) {
    everyScorer(test::followsItsFormula);
}
TEST(Mixtures, KeepFloorsTiesAndNaNOfVectorsAtTheMean) {
    everyScorer(test::keepsFloorsTiesAndNaN);
}

}  // namespace
