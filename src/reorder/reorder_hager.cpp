// CReorderMat: the Hager numberings. Their operations hold their places now; their bodies
// come with the Hager numberings themselves.
#include "reorder/reordermat.h"

float CReorderMat::WFun(int) {
    return 0.0f;
} // body comes with the Hager numberings

void CReorderMat::Hager1() {} // body comes with the Hager numberings

void CReorderMat::Hager2() {} // body comes with the Hager numberings

void CReorderMat::Hager3() {} // body comes with the Hager numberings

int CReorderMat::MinZ() {
    return 0;
} // body comes with the Hager numberings

float CReorderMat::S_k(int) {
    return 0.0f;
} // body comes with the Hager numberings

int CReorderMat::d_k(int) {
    return 0;
} // body comes with the Hager numberings

int CReorderMat::r_k(int) {
    return 0;
} // body comes with the Hager numberings
