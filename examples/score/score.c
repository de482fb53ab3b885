/* Scores a block of frames against a mixture model: how likely each frame is, and which component explains it best.
 * The frames are the first two formants of vowels in kHz; the components' means are those that Peterson and Barney
 * (1952) measured on men.
 */
#include <kels.h>
#include <math.h>
#include <stdio.h>

enum { components = 3, frames = 6, width = 2 };

int main(void) {
    static const char* const vowel[components] = {"a", "i", "u"};
    const Kel32f mean[components][width] = {{0.730f, 1.090f}, {0.270f, 2.290f}, {0.300f, 0.870f}};
    const Kel32f ivar[components][width] = {{80.0f, 60.0f}, {300.0f, 20.0f}, {250.0f, 40.0f}};
    const Kel32f logWeight[components] = {logf(0.4f), logf(0.3f), logf(0.3f)};
    const Kel32f block[frames][width] = {{0.71f, 1.12f}, {0.75f, 1.31f}, {0.25f, 2.20f},
                                         {0.31f, 1.90f}, {0.33f, 0.80f}, {0.50f, 1.00f}};
    Kel32f det[components], gConst[components], total[frames], score[components][frames];
    int c, f;

    /* Once per model: what does not depend on the frame, ln weight - (width ln 2 pi + ln |variance|) / 2. */
    for (c = 0; c < components; ++c) kelsUpdateGConst_32f(ivar[c], width, &det[c]);
    kelsOutProbPreCalc_32f(logWeight, det, gConst, components);

    /* Each component over the whole block: its own scores, and its share of the frames' likelihoods. */
    kelsSet_32f(KELS_LOG_ZERO_32F, total, frames);
    for (c = 0; c < components; ++c) {
        kelsLogGauss_32f_D2(block[0], width, mean[c], ivar[c], width, score[c], frames, gConst[c]);
        kelsLogGaussAdd_32f_D2(block[0], width, mean[c], ivar[c], width, total, frames, gConst[c]);
    }

    for (f = 0; f < frames; ++f) {
        int best = 0;
        for (c = 1; c < components; ++c) best = score[c][f] > score[best][f] ? c : best;
        printf("F1 %.2f  F2 %.2f kHz   log likelihood %8.3f   %s, with probability %.3f\n", block[f][0], block[f][1],
               total[f], vowel[best], exp(score[best][f] - total[f]));
    }
    return 0;
}
