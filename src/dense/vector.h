// CVector: the dense vector of doubles and the storage base of CMatrix (a matrix is a
// vector with a row count). Right-hand sides, solutions and work vectors of every solver
// are CVectors. Arithmetic tolerates unequal sizes: additions grow the target to the
// longer operand, inner products stop at the shorter. No index is ever tested.
//
// Choices made here:
// - The constructor's bInit and dValue default to false and 0.0; all library calls pass them.
// - Max, Min and operator[] on an empty vector have no element: the caller must not ask.
// - Copies (copy constructor, operator=) take a const source.
// - ReadASCII leaves the vector empty when its storage can't be had, and the file behind the
//   last number's line for CR LF and LF files alike (textio/tagseek.h).
#pragma once

#include "frame/virtmat.h"

class CVector : public CVirtRealMat {
    DECLARE_SERIAL(CVector)
public:
    CVector();
    // nSize of 0 or below makes an empty vector; bInit fills with dValue.
    CVector(int nSize, bool bInit = false, double dValue = 0.0);
    explicit CVector(CVector *pOther);
    CVector(const CVector &other);
    ~CVector() override;

    // --- overrides of the frame, in its order ---
    void Serialize(CArchive &ar) override;
    // pSizes: size, initialise flag, fill value; nDims below 2 initialises with 0.0.
    bool Allocate(int *pSizes, int nDims) override;
    void ReadASCII(CFile *pFile) override;
    void WriteASCII(CFile *pFile, CString strTag, CString strFormat, int nFirst, int nEnd,
                    int nMode, bool bTag, bool bIndices) override;
    // Adds pValues[i] at pIndices[i]; negative indices are passed over.
    void AddValues(LONG *pIndices, double *pValues, int nCount) override;
    CVirtRealMat &operator=(double dValue) override;
    CVirtRealMat &operator+=(double dValue) override;

    // --- the vector's own virtual operations, in table order ---
    // this += dFactor * other, by the size rule of operator+=.
    virtual void Add(CVector &other, double dFactor);
    // this = dA * A + dB * B, sized to the longer; the target may be a full-length operand.
    virtual CVector &LinComb(double dA, CVector &A, double dB, CVector &B);
    virtual void CrossProd(CVector *pA, CVector *pB);
    // Elements exactly equal to dValue in [nFirst, nEnd); nEnd below 1 means the size.
    virtual int Count(double dValue, int nFirst, int nEnd);
    virtual double Dot(CVector &other);
    virtual double Mean();
    // First index in [nFirst, nEnd) exactly equal to dValue, or -1.
    virtual int Find(double dValue, int nFirst, int nEnd);
    // False when no storage stands (size 0, or the allocation failed).
    virtual bool Allocate(int nSize, bool bInit, double dValue);
    // Smallest magnitude (the p-norm as p goes to minus infinity).
    virtual double ZeroNorm();
    virtual double InfNorm();
    virtual double PNorm(double dP);
    // References to the first of equal extremes.
    virtual double &Min();
    virtual double Sum();
    virtual double &Max();
    virtual void SetIncremental(double dStep, double dStart);
    // Puts the array in place and returns the previous one, which is now the caller's.
    virtual double *ReplaceVector(double *pValues, int nSize);
    // Exchanges arrays and sizes; a CMatrix partner has its row count follow.
    virtual void SwitchVectors(CVector *pOther);
    virtual void Initialize(double dValue);

    // --- access; no index is tested ---
    int GetSize() const { return m_nSize; }
    double *GetVector() const { return m_pVector; }
    double GetValue(int i) const { return m_pVector[i]; }
    void SetValue(int i, double dValue) { m_pVector[i] = dValue; }
    double &operator[](int i) { return m_pVector[i]; }

    // --- storage ---
    // Takes the other's size and contents; an equal size keeps the array.
    CVector &operator=(const CVector &other);
    // Adopts the array, which is now the object's.
    void SetVector(int nSize, double *pValues);
    // Keeps the elements in [nFirst, nEnd); nEnd below 1 or above the size means the size.
    void Trunc(int nFirst, int nEnd);

    // --- element-wise arithmetic ---
    CVector &operator*=(double dValue);
    CVector &operator/=(double dValue);
    void Scale(double dValue);
    // Element-wise product with the other, over this vector's size.
    void Scale(CVector *pOther);
    CVector &operator+=(CVector &other);
    CVector &operator-=(CVector &other);
    // pA[i] += dFactor * pB[i]; a factor of exactly 0.0 counts as absent (adds pB in full).
    static void AplusBC(double *pA, double *pB, int nCount, double dFactor);

    // --- reductions ---
    double Length() const;
    // Divides by the length unless it is 0.0; returns the length.
    double Normalize();

    // --- rotations ---
    // The unit quaternion of the rotation vector pVector (axis times angle): writes the
    // vector part to pQuat[0..2], returns the scalar part. Near the zero rotation a series
    // replaces sin(t/2)/t, so the zero vector gives (1, 0, 0, 0).
    static double VectToQuat(double *pVector, double *pQuat);

    // --- comparison, exact ---
    bool operator==(const CVector &other) const;
    bool operator==(double dValue) const;
    bool operator==(int nValue) const;
    bool operator!=(const CVector &other) const { return !(*this == other); }
    bool operator!=(double dValue) const { return !(*this == dValue); }
    bool operator!=(int nValue) const { return !(*this == nValue); }

    int m_nSize;
    double *m_pVector; // owned, new[]; NULL when empty

private:
    // The size rule shared by +=, -= and Add: this[i] += dFactor * other[i].
    void AddScaled(const CVector &other, double dFactor);
};
