// Element matrices of femsolve's two problems, on linear elements.
//  - Poisson, -div(k grad u) = f: 3-node triangles, 4-node bilinear quadrangles (2 by 2
//    Gauss points), 4-node tetrahedra. One unknown per node.
//  - Plane stress, thickness t, Young's modulus E, Poisson's ratio nu: 3-node triangles
//    and 4-node bilinear quadrangles. Unknowns per node in the order ux, uy.
// Matrices are row-major, as the library's AddValues takes them. Coordinates are x, y, z per
// node; the 2D elements read x and y only.
#pragma once

struct Material {
    double k = 1.0;  // conductivity (Poisson)
    double E = 1.0;  // Young's modulus
    double nu = 0.3; // Poisson's ratio
    double t = 1.0;  // thickness
};

// Poisson stiffness of a triangle (3), quadrangle (4) or tetrahedron (4 nodes, bDim3).
// False for an element of zero or negative measure.
bool PoissonStiffness(int nType, const double *pXYZ, double k, double *pK);
// Plane-stress stiffness of a triangle (type 2, 6 by 6) or quadrangle (type 3, 8 by 8).
bool ElasticStiffness(int nType, const double *pXYZ, const Material &m, double *pK);
// Stress (sxx, syy, sxy) at the element's centre from its nodal displacements.
void ElasticStress(int nType, const double *pXYZ, const Material &m, const double *pU,
                   double *pStress);
// Von Mises equivalent of a plane stress.
double VonMises(const double *pStress);
// Integral of each shape function over the element (a point, line, triangle, quadrangle or
// tetrahedron, in 3D space): the nodal share of a unit uniform load.
void NodalWeights(int nType, const double *pXYZ, double *pW);
