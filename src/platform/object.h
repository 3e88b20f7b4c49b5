// CObject and CRuntimeClass: the object model every serial class of the library hangs from.
// A class record names the class, its schema and how to create it; records of the
// serial classes are registered at load so that an archive can create objects by name.
#pragma once

#include "platform/types.h"

class CObject;
class CArchive;
class CDumpContext;

struct CRuntimeClass {
    const char *m_lpszClassName;
    int m_nObjectSize;
    UINT m_wSchema; // 0xFFFF for classes that cannot be archived
    CObject *(*m_pfnCreateObject)();
    CRuntimeClass *(*m_pfnGetBaseClass)();
    CRuntimeClass *m_pNextClass; // link in the list of registered classes

    // A new object of the class, or NULL when the class is abstract.
    CObject *CreateObject() const;
    // True when this class is pBase or derives from it.
    BOOL IsDerivedFrom(const CRuntimeClass *pBase) const;
    // The registered record of that name, or NULL.
    static CRuntimeClass *FromName(const char *pszClassName);
    // The first registered record, NULL if none; m_pNextClass walks the rest. Lets a host
    // or a test reach every class that an archive can create by name.
    static CRuntimeClass *GetFirstClass();
};

// Adds a record to the list FromName searches; a record already there is left alone.
// IMPLEMENT_SERIAL registers its class this way at load; dynamic classes are not registered.
void AfxClassInit(CRuntimeClass *pNewClass);

// Registers a class record by static construction.
struct AFX_CLASSINIT {
    explicit AFX_CLASSINIT(CRuntimeClass *pNewClass) { AfxClassInit(pNewClass); }
};

class CObject {
public:
    static CRuntimeClass classCObject;
    static CRuntimeClass *_GetBaseClass();

    // Virtual table order: GetRuntimeClass, destructor, Serialize, two diagnostics.
    virtual CRuntimeClass *GetRuntimeClass() const;
    virtual ~CObject() = default;
    virtual void Serialize(CArchive &) {}
    virtual void AssertValid() const {}
    virtual void Dump(CDumpContext &) const {}

    BOOL IsKindOf(const CRuntimeClass *pClass) const;

protected:
    CObject() = default;
    CObject(const CObject &) = default;
    CObject &operator=(const CObject &) = default;
};

// clang-format off
#define RUNTIME_CLASS(class_name) (&class_name::class##class_name)

#define DECLARE_DYNAMIC(class_name)                                                                \
public:                                                                                            \
    static CRuntimeClass class##class_name;                                                        \
    static CRuntimeClass *_GetBaseClass();                                                         \
    CRuntimeClass *GetRuntimeClass() const override;

#define DECLARE_SERIAL(class_name)                                                                 \
    DECLARE_DYNAMIC(class_name)                                                                    \
    static CObject *CreateObject();                                                                \
    friend CArchive &operator>>(CArchive &ar, class_name *&pOb);

#define IMPLEMENT_RUNTIMECLASS_(class_name, base_class_name, wSchema, pfnNew)                      \
    CRuntimeClass class_name::class##class_name = {#class_name,                                    \
                                                   (int)sizeof(class class_name),                  \
                                                   wSchema,                                        \
                                                   pfnNew,                                         \
                                                   &class_name::_GetBaseClass,                     \
                                                   NULL};                                          \
    CRuntimeClass *class_name::_GetBaseClass() { return RUNTIME_CLASS(base_class_name); }         \
    CRuntimeClass *class_name::GetRuntimeClass() const { return RUNTIME_CLASS(class_name); }

#define IMPLEMENT_DYNAMIC(class_name, base_class_name)                                             \
    IMPLEMENT_RUNTIMECLASS_(class_name, base_class_name, 0xFFFF, NULL)

#define IMPLEMENT_SERIAL(class_name, base_class_name, wSchema)                                     \
    CObject *class_name::CreateObject() { return new class_name; }                                 \
    IMPLEMENT_RUNTIMECLASS_(class_name, base_class_name, wSchema, class_name::CreateObject)        \
    static AFX_CLASSINIT _init_##class_name(RUNTIME_CLASS(class_name));                            \
    CArchive &operator>>(CArchive &ar, class_name *&pOb) {                                         \
        pOb = (class_name *)ar.ReadObject(RUNTIME_CLASS(class_name));                              \
        return ar;                                                                                 \
    }
// clang-format on
