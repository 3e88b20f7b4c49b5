// complex_d: a plain complex number of two doubles, offered to hosts beside the matrix
// classes; nothing else in the library uses it. Passed by value, no virtual table.
//
// Every comparison is exact. The ordering compares moduli only, so two numbers of equal
// modulus are neither greater nor less than each other while == may still tell them apart.
// The in-place *= and /= form both new parts from the old ones, so z *= z squares z.
// Division by zero, Inv of 0 and sqrt of a negative part give what IEEE arithmetic gives.
#pragma once

struct complex_d {
    double m_dReal;
    double m_dImag;

    complex_d() : m_dReal(0.0), m_dImag(0.0) {}

    // --- values; the object is left as it is ---
    complex_d operator+(double d) const;
    complex_d operator-(double d) const;
    complex_d operator*(double d) const;
    complex_d operator/(double d) const;
    complex_d operator+(complex_d z) const;
    complex_d operator-(complex_d z) const;
    complex_d operator*(complex_d z) const;
    complex_d operator/(complex_d z) const;

    // --- in place; each returns the object ---
    complex_d &operator=(double d);
    // operator=(complex_d) is the implicit copy assignment.
    complex_d &operator()(double dReal, double dImag);
    complex_d &operator+=(double d);
    complex_d &operator-=(double d);
    complex_d &operator*=(double d);
    complex_d &operator/=(double d);
    complex_d &operator+=(complex_d z);
    complex_d &operator-=(complex_d z);
    complex_d &operator*=(complex_d z);
    complex_d &operator/=(complex_d z);
    // The conjugate, (a, -b).
    complex_d &Conj();
    // The reciprocal, (a, -b) / (a^2 + b^2).
    complex_d &Inv();

    // --- predicates, exact ---
    bool IsReal() const { return m_dImag == 0.0; }
    bool IsIm() const { return m_dReal == 0.0; }
    bool operator==(double d) const { return m_dReal == d && m_dImag == 0.0; }
    bool operator!=(double d) const { return !(*this == d); }
    bool operator==(complex_d z) const { return m_dReal == z.m_dReal && m_dImag == z.m_dImag; }
    bool operator!=(complex_d z) const { return !(*this == z); }
    // Moduli compared.
    bool operator>(complex_d z) const;
    bool operator<(complex_d z) const;

    // "a +bi", "a -bi" or "a " (the blank stays), then std::endl, on std::cout.
    void COUT() const;
};

// The modulus, sqrt(x^2 + y^2) formed directly, without scaling.
double fabs(complex_d z);
// The root of each part, (sqrt(x), sqrt(y)): not the principal root of the number.
complex_d sqrt(complex_d z);
