// Element matrices for the Poisson and plane-stress problems.
#include "elements.h"

#include <cmath>

namespace {

const double kGauss = 0.57735026918962584; // 1 / sqrt(3)
const double kXi[4] = {-kGauss, kGauss, kGauss, -kGauss};
const double kEta[4] = {-kGauss, -kGauss, kGauss, kGauss};

// Shape derivatives of the bilinear quadrangle at (xi, eta) in x and y; yields det J.
double QuadGradients(const double *pXYZ, double xi, double eta, double *pDx, double *pDy,
                     double *pN) {
    static const double sx[4] = {-1, 1, 1, -1}, sy[4] = {-1, -1, 1, 1};
    double dXi[4], dEta[4];
    for (int a = 0; a < 4; a++) {
        dXi[a] = 0.25 * sx[a] * (1 + sy[a] * eta);
        dEta[a] = 0.25 * sy[a] * (1 + sx[a] * xi);
        if (pN)
            pN[a] = 0.25 * (1 + sx[a] * xi) * (1 + sy[a] * eta);
    }
    double j11 = 0, j12 = 0, j21 = 0, j22 = 0;
    for (int a = 0; a < 4; a++) {
        j11 += dXi[a] * pXYZ[3 * a];
        j12 += dXi[a] * pXYZ[3 * a + 1];
        j21 += dEta[a] * pXYZ[3 * a];
        j22 += dEta[a] * pXYZ[3 * a + 1];
    }
    double det = j11 * j22 - j12 * j21;
    if (pDx)
        for (int a = 0; a < 4; a++) {
            pDx[a] = (j22 * dXi[a] - j12 * dEta[a]) / det;
            pDy[a] = (-j21 * dXi[a] + j11 * dEta[a]) / det;
        }
    return det;
}

// Shape gradients of the linear triangle in x and y; yields its area (signed).
double TriGradients(const double *p, double *pDx, double *pDy) {
    double x0 = p[0], y0 = p[1], x1 = p[3], y1 = p[4], x2 = p[6], y2 = p[7];
    double a2 = (x1 - x0) * (y2 - y0) - (x2 - x0) * (y1 - y0);
    pDx[0] = (y1 - y2) / a2;
    pDx[1] = (y2 - y0) / a2;
    pDx[2] = (y0 - y1) / a2;
    pDy[0] = (x2 - x1) / a2;
    pDy[1] = (x0 - x2) / a2;
    pDy[2] = (x1 - x0) / a2;
    return 0.5 * a2;
}

// Plane-stress material matrix.
void PlaneStress(const Material &m, double D[3][3]) {
    double c = m.E / (1 - m.nu * m.nu);
    double v[3][3] = {{c, c * m.nu, 0}, {c * m.nu, c, 0}, {0, 0, c * (1 - m.nu) / 2}};
    for (int i = 0; i < 3; i++)
        for (int j = 0; j < 3; j++)
            D[i][j] = v[i][j];
}

// Adds w * B^T D B for the strain-displacement matrix of gradients pDx, pDy (n nodes).
void AddBtDB(int n, const double *pDx, const double *pDy, double D[3][3], double w, double *pK) {
    int nDOF = 2 * n;
    for (int a = 0; a < n; a++)
        for (int b = 0; b < n; b++) {
            // B_a = [[dx,0],[0,dy],[dy,dx]]
            double Ba[3][2] = {{pDx[a], 0}, {0, pDy[a]}, {pDy[a], pDx[a]}};
            double Bb[3][2] = {{pDx[b], 0}, {0, pDy[b]}, {pDy[b], pDx[b]}};
            for (int i = 0; i < 2; i++)
                for (int j = 0; j < 2; j++) {
                    double s = 0;
                    for (int p = 0; p < 3; p++)
                        for (int q = 0; q < 3; q++)
                            s += Ba[p][i] * D[p][q] * Bb[q][j];
                    pK[(2 * a + i) * nDOF + 2 * b + j] += w * s;
                }
        }
}

} // namespace

bool PoissonStiffness(int nType, const double *pXYZ, double k, double *pK) {
    if (nType == 2) {
        double dx[3], dy[3];
        double A = TriGradients(pXYZ, dx, dy);
        if (!(A > 0) && !(A < 0))
            return false;
        A = std::fabs(A);
        for (int a = 0; a < 3; a++)
            for (int b = 0; b < 3; b++)
                pK[3 * a + b] = k * A * (dx[a] * dx[b] + dy[a] * dy[b]);
        return true;
    }
    if (nType == 3) {
        for (int i = 0; i < 16; i++)
            pK[i] = 0.0;
        for (int g = 0; g < 4; g++) {
            double dx[4], dy[4];
            double det = QuadGradients(pXYZ, kXi[g], kEta[g], dx, dy, nullptr);
            if (!(det > 0) && !(det < 0))
                return false;
            for (int a = 0; a < 4; a++)
                for (int b = 0; b < 4; b++)
                    pK[4 * a + b] += k * std::fabs(det) * (dx[a] * dx[b] + dy[a] * dy[b]);
        }
        return true;
    }
    if (nType == 4) {
        // Gradients from the inverse of the edge matrix [p1-p0; p2-p0; p3-p0].
        const double *p = pXYZ;
        double J[3][3];
        for (int r = 0; r < 3; r++)
            for (int c = 0; c < 3; c++)
                J[r][c] = p[3 * (r + 1) + c] - p[c];
        double det = J[0][0] * (J[1][1] * J[2][2] - J[1][2] * J[2][1]) -
                     J[0][1] * (J[1][0] * J[2][2] - J[1][2] * J[2][0]) +
                     J[0][2] * (J[1][0] * J[2][1] - J[1][1] * J[2][0]);
        if (!(det > 0) && !(det < 0))
            return false;
        double inv[3][3] = {
            {J[1][1] * J[2][2] - J[1][2] * J[2][1], J[0][2] * J[2][1] - J[0][1] * J[2][2],
             J[0][1] * J[1][2] - J[0][2] * J[1][1]},
            {J[1][2] * J[2][0] - J[1][0] * J[2][2], J[0][0] * J[2][2] - J[0][2] * J[2][0],
             J[0][2] * J[1][0] - J[0][0] * J[1][2]},
            {J[1][0] * J[2][1] - J[1][1] * J[2][0], J[0][1] * J[2][0] - J[0][0] * J[2][1],
             J[0][0] * J[1][1] - J[0][1] * J[1][0]}};
        // grad N_{r+1} is column r of J^-1; grad N_0 the negative sum.
        double g[4][3];
        for (int c = 0; c < 3; c++) {
            g[0][c] = 0;
            for (int r = 0; r < 3; r++) {
                g[r + 1][c] = inv[c][r] / det;
                g[0][c] -= g[r + 1][c];
            }
        }
        double V = std::fabs(det) / 6.0;
        for (int a = 0; a < 4; a++)
            for (int b = 0; b < 4; b++)
                pK[4 * a + b] = k * V * (g[a][0] * g[b][0] + g[a][1] * g[b][1] + g[a][2] * g[b][2]);
        return true;
    }
    return false;
}

bool ElasticStiffness(int nType, const double *pXYZ, const Material &m, double *pK) {
    double D[3][3];
    PlaneStress(m, D);
    int n = nType == 2 ? 3 : 4;
    for (int i = 0; i < 4 * n * n; i++)
        pK[i] = 0.0;
    if (nType == 2) {
        double dx[3], dy[3];
        double A = TriGradients(pXYZ, dx, dy);
        if (!(A > 0) && !(A < 0))
            return false;
        AddBtDB(3, dx, dy, D, std::fabs(A) * m.t, pK);
        return true;
    }
    if (nType == 3) {
        for (int g = 0; g < 4; g++) {
            double dx[4], dy[4];
            double det = QuadGradients(pXYZ, kXi[g], kEta[g], dx, dy, nullptr);
            if (!(det > 0) && !(det < 0))
                return false;
            AddBtDB(4, dx, dy, D, std::fabs(det) * m.t, pK);
        }
        return true;
    }
    return false;
}

void ElasticStress(int nType, const double *pXYZ, const Material &m, const double *pU,
                   double *pStress) {
    double D[3][3], dx[4], dy[4];
    PlaneStress(m, D);
    int n = 3;
    if (nType == 2) {
        TriGradients(pXYZ, dx, dy);
    } else {
        QuadGradients(pXYZ, 0.0, 0.0, dx, dy, nullptr);
        n = 4;
    }
    double e[3] = {0, 0, 0};
    for (int a = 0; a < n; a++) {
        e[0] += dx[a] * pU[2 * a];
        e[1] += dy[a] * pU[2 * a + 1];
        e[2] += dy[a] * pU[2 * a] + dx[a] * pU[2 * a + 1];
    }
    for (int i = 0; i < 3; i++)
        pStress[i] = D[i][0] * e[0] + D[i][1] * e[1] + D[i][2] * e[2];
}

double VonMises(const double *s) {
    return std::sqrt(s[0] * s[0] - s[0] * s[1] + s[1] * s[1] + 3 * s[2] * s[2]);
}

void NodalWeights(int nType, const double *p, double *pW) {
    auto sub = [&](int a, int b, double *d) {
        for (int c = 0; c < 3; c++)
            d[c] = p[3 * a + c] - p[3 * b + c];
    };
    auto cross = [](const double *u, const double *v, double *w) {
        w[0] = u[1] * v[2] - u[2] * v[1];
        w[1] = u[2] * v[0] - u[0] * v[2];
        w[2] = u[0] * v[1] - u[1] * v[0];
    };
    auto norm = [](const double *u) { return std::sqrt(u[0] * u[0] + u[1] * u[1] + u[2] * u[2]); };
    double u[3], v[3], w[3];
    switch (nType) {
    case 15:
        pW[0] = 1.0;
        break;
    case 1:
        sub(1, 0, u);
        pW[0] = pW[1] = norm(u) / 2;
        break;
    case 2:
        sub(1, 0, u);
        sub(2, 0, v);
        cross(u, v, w);
        pW[0] = pW[1] = pW[2] = norm(w) / 6;
        break;
    case 3: {
        // Bilinear map of a quadrangle in space: |dX/dxi x dX/deta| at 2 by 2 Gauss points.
        static const double sx[4] = {-1, 1, 1, -1}, sy[4] = {-1, -1, 1, 1};
        for (int a = 0; a < 4; a++)
            pW[a] = 0.0;
        for (int g = 0; g < 4; g++) {
            double dxi[3] = {0, 0, 0}, deta[3] = {0, 0, 0}, N[4];
            for (int a = 0; a < 4; a++) {
                N[a] = 0.25 * (1 + sx[a] * kXi[g]) * (1 + sy[a] * kEta[g]);
                for (int c = 0; c < 3; c++) {
                    dxi[c] += 0.25 * sx[a] * (1 + sy[a] * kEta[g]) * p[3 * a + c];
                    deta[c] += 0.25 * sy[a] * (1 + sx[a] * kXi[g]) * p[3 * a + c];
                }
            }
            cross(dxi, deta, w);
            for (int a = 0; a < 4; a++)
                pW[a] += N[a] * norm(w);
        }
        break;
    }
    case 4:
        sub(1, 0, u);
        sub(2, 0, v);
        sub(3, 0, w);
        {
            double c[3];
            cross(u, v, c);
            double V = std::fabs(c[0] * w[0] + c[1] * w[1] + c[2] * w[2]) / 6;
            pW[0] = pW[1] = pW[2] = pW[3] = V / 4;
        }
        break;
    }
}
