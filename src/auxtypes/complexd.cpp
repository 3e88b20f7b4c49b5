#include "auxtypes/complexd.h"

#include <cmath>
#include <iostream>

static complex_d Make(double dReal, double dImag) {
    complex_d z;
    return z(dReal, dImag);
}

complex_d complex_d::operator+(double d) const {
    return Make(m_dReal + d, m_dImag);
}
complex_d complex_d::operator-(double d) const {
    return Make(m_dReal - d, m_dImag);
}
complex_d complex_d::operator*(double d) const {
    return Make(m_dReal * d, m_dImag * d);
}
complex_d complex_d::operator/(double d) const {
    return Make(m_dReal / d, m_dImag / d);
}

complex_d complex_d::operator+(complex_d z) const {
    return Make(m_dReal + z.m_dReal, m_dImag + z.m_dImag);
}

complex_d complex_d::operator-(complex_d z) const {
    return Make(m_dReal - z.m_dReal, m_dImag - z.m_dImag);
}

complex_d complex_d::operator*(complex_d z) const {
    return Make(z.m_dReal * m_dReal - z.m_dImag * m_dImag,
                z.m_dReal * m_dImag + z.m_dImag * m_dReal);
}

complex_d complex_d::operator/(complex_d z) const {
    double n = z.m_dReal * z.m_dReal + z.m_dImag * z.m_dImag;
    return Make((z.m_dReal * m_dReal + z.m_dImag * m_dImag) / n,
                (z.m_dReal * m_dImag - z.m_dImag * m_dReal) / n);
}

complex_d &complex_d::operator=(double d) {
    return (*this)(d, 0.0);
}

complex_d &complex_d::operator()(double dReal, double dImag) {
    m_dReal = dReal;
    m_dImag = dImag;
    return *this;
}

complex_d &complex_d::operator+=(double d) {
    return *this = *this + d;
}
complex_d &complex_d::operator-=(double d) {
    return *this = *this - d;
}
complex_d &complex_d::operator*=(double d) {
    return *this = *this * d;
}
complex_d &complex_d::operator/=(double d) {
    return *this = *this / d;
}
complex_d &complex_d::operator+=(complex_d z) {
    return *this = *this + z;
}
complex_d &complex_d::operator-=(complex_d z) {
    return *this = *this - z;
}
// The value operators read only the old parts, so these hold for z aliasing the object too.
complex_d &complex_d::operator*=(complex_d z) {
    return *this = *this * z;
}
complex_d &complex_d::operator/=(complex_d z) {
    return *this = *this / z;
}

complex_d &complex_d::Conj() {
    m_dImag = -m_dImag;
    return *this;
}

complex_d &complex_d::Inv() {
    double m = m_dReal * m_dReal + m_dImag * m_dImag;
    return (*this)(m_dReal / m, -m_dImag / m);
}

bool complex_d::operator>(complex_d z) const {
    return fabs(*this) > fabs(z);
}
bool complex_d::operator<(complex_d z) const {
    return fabs(*this) < fabs(z);
}

void complex_d::COUT() const {
    std::cout << m_dReal << " ";
    if (m_dImag != 0.0) {
        if (m_dImag > 0.0)
            std::cout << "+";
        std::cout << m_dImag << "i";
    }
    std::cout << std::endl;
}

double fabs(complex_d z) {
    return std::sqrt(z.m_dReal * z.m_dReal + z.m_dImag * z.m_dImag);
}

complex_d sqrt(complex_d z) {
    return Make(std::sqrt(z.m_dReal), std::sqrt(z.m_dImag));
}
