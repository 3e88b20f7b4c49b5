// CReorderMat: the Hager numberings. Their operations hold their places now; their bodies
// come with the Hager numberings themselves.
#include "reorder/reordermat.h"

float CReorderMat::WFun(int) {
    return 0.0f;
}

void CReorderMat::Hager1() {}

void CReorderMat::Hager2() {}

void CReorderMat::Hager3() {}

int CReorderMat::MinZ() {
    return 0;
}

float CReorderMat::S_k(int) {
    return 0.0f;
}

int CReorderMat::d_k(int) {
    return 0;
}

int CReorderMat::r_k(int) {
    return 0;
}
