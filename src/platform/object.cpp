// Class records: the registered list that creation by name searches, and CObject's own record.
#include "platform/object.h"

#include <cstring>

// Zero-initialised before any static constructor runs, so registration order doesn't matter.
static CRuntimeClass *s_pFirstClass;

CRuntimeClass CObject::classCObject = {"CObject", (int)sizeof(CObject), 0xFFFF, NULL, NULL, NULL};

CRuntimeClass *CObject::_GetBaseClass() {
    return NULL;
}

CRuntimeClass *CObject::GetRuntimeClass() const {
    return &classCObject;
}

BOOL CObject::IsKindOf(const CRuntimeClass *pClass) const {
    return GetRuntimeClass()->IsDerivedFrom(pClass);
}

CObject *CRuntimeClass::CreateObject() const {
    return m_pfnCreateObject ? m_pfnCreateObject() : NULL;
}

BOOL CRuntimeClass::IsDerivedFrom(const CRuntimeClass *pBase) const {
    for (const CRuntimeClass *p = this; p != NULL;
         p = p->m_pfnGetBaseClass ? p->m_pfnGetBaseClass() : NULL) {
        if (p == pBase)
            return TRUE;
    }
    return FALSE;
}

CRuntimeClass *CRuntimeClass::FromName(const char *pszClassName) {
    if (pszClassName == NULL)
        return NULL;
    for (CRuntimeClass *p = s_pFirstClass; p != NULL; p = p->m_pNextClass) {
        if (strcmp(p->m_lpszClassName, pszClassName) == 0)
            return p;
    }
    return NULL;
}

CRuntimeClass *CRuntimeClass::GetFirstClass() {
    return s_pFirstClass;
}

void AfxClassInit(CRuntimeClass *pNewClass) {
    // A record registered twice would make the list a cycle.
    for (CRuntimeClass *p = s_pFirstClass; p != NULL; p = p->m_pNextClass) {
        if (p == pNewClass)
            return;
    }
    pNewClass->m_pNextClass = s_pFirstClass;
    s_pFirstClass = pNewClass;
}
