// Reports, time and chance: the platform's message box, clock and random numbers.
// Library code calls these, never clock/rand/srand directly.
#pragma once

#include "platform/types.h"

#include <ctime>

// What a report handler returns when the user has dismissed the text.
enum { IDOK = 1 };

typedef int (*AfxReportHandler)(const char *pszText);

// Hands the text to the current report handler and returns its result.
int AfxMessageBox(const char *pszText, UINT nType = 0, UINT nIDHelp = 0);
// Installs a report handler (NULL restores the default) and returns the previous one.
// The default writes the text and a newline to standard error and returns IDOK at once.
AfxReportHandler AfxSetReportHandler(AfxReportHandler pfnHandler);

// Processor time of the process in milliseconds, the tick the library's constants assume.
LONG AfxClock();

// 0 to 32767 from the classic linear congruential generator.
int AfxRand();
void AfxSrand(unsigned nSeed);

// Seconds since the epoch, as time(NULL) gives them, for the seeds taken from the clock.
// A test that has to repeat a time-seeded run installs a source that returns a fixed time:
// AfxSetTimeSource returns the previous source, and NULL restores time(NULL).
typedef time_t (*AfxTimeSource)();
time_t AfxTime();
AfxTimeSource AfxSetTimeSource(AfxTimeSource pfnSource);
