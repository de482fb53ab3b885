/* libkelsra6: signal-processing and pattern-recognition primitives for speech recognition.
 *
 * One header a family; this one includes them all.  Valid C99 and C++.  Conventions that hold for every function stand
 * in kels/types.h.
 */
#ifndef KELS_H
#define KELS_H

#include "kels/types.h"

#include "kels/aurora.h"
#include "kels/block.h"
#include "kels/core.h"
#include "kels/cpu.h"
#include "kels/dct.h"
#include "kels/delta.h"
#include "kels/dtw.h"
#include "kels/echo.h"
#include "kels/enhance.h"
#include "kels/fbank.h"
#include "kels/features.h"
#include "kels/fft.h"
#include "kels/frame.h"
#include "kels/gauss.h"
#include "kels/log.h"
#include "kels/lp.h"
#include "kels/matrix.h"
#include "kels/mixture.h"
#include "kels/model.h"
#include "kels/pitch.h"
#include "kels/rank.h"
#include "kels/resample.h"
#include "kels/select.h"
#include "kels/stats.h"
#include "kels/store.h"
#include "kels/update.h"
#include "kels/vad.h"
#include "kels/vq.h"

#endif
