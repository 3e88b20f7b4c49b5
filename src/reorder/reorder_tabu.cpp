// CReorderMat: the tabu search. Its operations hold their slots now; their bodies come
// with the tabu search itself.
#include "reorder/reordermat.h"

int CReorderMat::GetClosestToMid(int v) {
    return v;
} // body comes with the tabu search

void CReorderMat::TabuReorder2() {} // body comes with the tabu search

int CReorderMat::NumMovables(int, int) {
    return 0;
} // body comes with the tabu search

void CReorderMat::TabuReorder() {} // body comes with the tabu search

bool CReorderMat::IsCandidate(int, int) {
    return false;
} // body comes with the tabu search

int CReorderMat::mid(int &) {
    return 0;
} // body comes with the tabu search

void CReorderMat::InitTabu(LONG) {} // body comes with the tabu search
