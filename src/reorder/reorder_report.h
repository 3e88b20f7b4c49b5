// The timing report of the minimum-degree numberings (internal to the reorderers).
#pragma once

#include "frame/virtmat.h"

#include <cstdio>

// "Used time reordering:   %u m %2.2f s\r\n" for the time from nStart to nEnd (ms ticks).
inline void BuildReorderReport(char (&szText)[128], LONG nStart, LONG nEnd) {
    double dSeconds = (double)(nEnd - nStart) * 0.001;
    snprintf(szText, sizeof(szText), "Used time reordering:   %s\r\n",
             (const char *)CVirtMat::FormatTime(dSeconds));
}
