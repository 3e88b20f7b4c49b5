// CReorderMat: the tabu search. Its operations hold their slots now; their bodies come
// with the tabu search itself.
#include "reorder/reordermat.h"

int CReorderMat::GetClosestToMid(int v) {
    return v;
}

void CReorderMat::TabuReorder2() {}

int CReorderMat::NumMovables(int, int) {
    return 0;
}

void CReorderMat::TabuReorder() {}

bool CReorderMat::IsCandidate(int, int) {
    return false;
}

int CReorderMat::mid(int &) {
    return 0;
}

void CReorderMat::InitTabu(LONG) {}
