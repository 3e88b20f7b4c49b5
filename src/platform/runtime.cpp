// Reports, time and chance.
#include "platform/runtime.h"

#include <cstdio>
#include <ctime>

static int DefaultReportHandler(const char *pszText) {
    fputs(pszText, stderr);
    fputc('\n', stderr);
    return IDOK;
}

static AfxReportHandler s_pfnReport = DefaultReportHandler;

int AfxMessageBox(const char *pszText, UINT, UINT) {
    return s_pfnReport(pszText ? pszText : "");
}

AfxReportHandler AfxSetReportHandler(AfxReportHandler pfnHandler) {
    AfxReportHandler pfnOld = s_pfnReport;
    s_pfnReport = pfnHandler ? pfnHandler : DefaultReportHandler;
    return pfnOld;
}

static_assert(CLOCKS_PER_SEC % 1000 == 0, "clock ticks must scale to milliseconds");

LONG AfxClock() {
    return (LONG)(clock() / (CLOCKS_PER_SEC / 1000));
}

static unsigned s_nRandState = 1;

int AfxRand() {
    s_nRandState = s_nRandState * 214013u + 2531011u;
    return (int)((s_nRandState >> 16) & 0x7FFF);
}

void AfxSrand(unsigned nSeed) {
    s_nRandState = nSeed;
}

static time_t DefaultTimeSource() {
    return time(NULL);
}

static AfxTimeSource s_pfnTime = DefaultTimeSource;

time_t AfxTime() {
    return s_pfnTime();
}

AfxTimeSource AfxSetTimeSource(AfxTimeSource pfnSource) {
    AfxTimeSource pfnOld = s_pfnTime;
    s_pfnTime = pfnSource ? pfnSource : DefaultTimeSource;
    return pfnOld;
}
