// complex_d: arithmetic from old parts, exact predicates, moduli ordering, console text.
#include "auxtypes/complexd.h"

#include <gtest/gtest.h>

#include <cmath>
#include <iostream>
#include <sstream>

static complex_d Z(double a, double b) {
    complex_d z;
    return z(a, b);
}

static void ExpectParts(complex_d z, double a, double b) {
    EXPECT_EQ(z.m_dReal, a);
    EXPECT_EQ(z.m_dImag, b);
}

TEST(ComplexD, ArithmeticUsesOldPartsAlsoWhenAliased) {
    ExpectParts(complex_d(), 0.0, 0.0);
    ExpectParts(Z(1, 2) * Z(3, 4), -5, 10);
    ExpectParts(Z(-5, 10) / Z(3, 4), 1, 2);
    complex_d z = Z(1, 2);
    z *= Z(3, 4);
    ExpectParts(z, -5, 10);
    z = Z(1, 2);
    z *= z; // (1 + 2i)^2
    ExpectParts(z, -3, 4);
    z /= z;
    ExpectParts(z, 1, 0);
    z = Z(-5, 10);
    z /= Z(3, 4);
    ExpectParts(z, 1, 2);
    z = Z(3, 5);
    z /= 2.0;
    ExpectParts(z, 1.5, 2.5);
    ExpectParts(Z(1, 2) + 1.0, 2, 2);
    ExpectParts(Z(1, 2) - Z(3, 5), -2, -3);
    z = 7.0;
    ExpectParts(z, 7, 0);
    ExpectParts(Z(0, 2).Inv(), 0, -0.5);
    complex_d c = Z(1, 2);
    EXPECT_EQ(&c.Conj(), &c);
    ExpectParts(c, 1, -2);
}

TEST(ComplexD, PredicatesAreExactAndOrderingComparesModuli) {
    EXPECT_TRUE(complex_d().IsReal() && complex_d().IsIm());
    EXPECT_FALSE(Z(1, 2) == Z(1, 3));
    EXPECT_TRUE(Z(1, 2) != Z(1, 3));
    EXPECT_TRUE(Z(3, 0) == 3.0);
    EXPECT_TRUE(Z(3, 1) != 3.0);
    // equal moduli: neither is greater, yet they differ
    EXPECT_FALSE(Z(3, 4) > Z(5, 0));
    EXPECT_FALSE(Z(3, 4) < Z(5, 0));
    EXPECT_TRUE(Z(3, 4) != Z(5, 0));
    EXPECT_TRUE(Z(1, 1) < Z(0, 2));
    EXPECT_EQ(fabs(Z(3, 4)), 5.0);
    ExpectParts(sqrt(Z(4, 9)), 2, 3);
    EXPECT_TRUE(std::isnan(sqrt(Z(-4, 0)).m_dReal));
}

TEST(ComplexD, ConsoleTextByImaginarySign) {
    std::ostringstream out;
    std::streambuf *pOld = std::cout.rdbuf(out.rdbuf());
    Z(1.5, 2).COUT();
    Z(1, -2.5).COUT();
    Z(-3, 0).COUT();
    std::cout.rdbuf(pOld);
    EXPECT_EQ(out.str(), "1.5 +2i\n1 -2.5i\n-3 \n");
}
