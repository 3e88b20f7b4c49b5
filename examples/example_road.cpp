// A short host program: what a finite-element code does with femmat so far.
#include "femmat.h"

#include <cstdio>

int main() {
    // Assemble two element load vectors into a global right-hand side of 4 unknowns;
    // -1 marks a degree of freedom without an equation.
    CVector f(4, true, 0.0);
    LONG dofs1[2] = {0, 1}, dofs2[2] = {1, -1};
    double load1[2] = {1.0, 2.0}, load2[2] = {0.5, 9.0};
    f.AddValues(dofs1, load1, 2);
    f.AddValues(dofs2, load2, 2);
    printf("f = (%g, %g, %g, %g), |f| = %g, sum = %g\n", f[0], f[1], f[2], f[3], f.Length(),
           f.Sum());

    // Any matrix class can be created by name and sized through a base pointer.
    CVirtMat *p = (CVirtMat *)CRuntimeClass::FromName("CVector")->CreateObject();
    int sizes[1] = {3};
    p->Allocate(sizes, 1);
    printf("created %s of size %d\n", p->GetRuntimeClass()->m_lpszClassName,
           ((CVector *)p)->GetSize());
    delete p;

    printf("a report time: %s\n", (const char *)CVirtMat::FormatTime(125.678));
    return 0;
}
