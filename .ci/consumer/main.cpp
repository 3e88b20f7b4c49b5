// Solves a 2 by 2 system through the installed headers and library, and creates a class by
// name to prove the library's run-time classes registered.
#include "femmat.h"

#include <cstdio>

int main() {
    CMatrix A(2, 2), B(2, 1);
    A.SetValue(0, 0, 4);
    A.SetValue(0, 1, 1);
    A.SetValue(1, 0, 1);
    A.SetValue(1, 1, 3);
    B.SetValue(0, 0, 1);
    B.SetValue(1, 0, 2);
    double dSeconds = 0;
    if (!A.SolveAxEqb(&B, true, dSeconds))
        return 1;
    // x = (1/11, 7/11)
    CRuntimeClass *pClass = CRuntimeClass::FromName("CSkylineMatrix");
    CObject *pObject = pClass ? pClass->CreateObject() : NULL;
    double x0 = B.GetValue(0, 0), x1 = B.GetValue(1, 0);
    bool bOk = pObject && x0 > 0.0909 && x0 < 0.0910 && x1 > 0.6363 && x1 < 0.6364;
    delete pObject;
    std::printf("%s\n", bOk ? "femmat consumer: ok" : "femmat consumer: wrong");
    return bOk ? 0 : 1;
}
