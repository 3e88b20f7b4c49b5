// femsolve's mesh: nodes, linear elements and the physical groups they belong to, read from
// gmsh's ASCII formats 2.2 and 4.1 (femsolve hands other .msh files to gmsh's API). Only
// what a linear solver uses is kept: points, 2-node lines, 3-node triangles, 4-node
// quadrangles and 4-node tetrahedra (gmsh types 15, 1, 2, 3, 4); every other element type is
// skipped, as are unknown sections.
//
// Bad input never crashes and never allocates more than its size can justify: a count is
// trusted only as far as the bytes that follow can hold that many entries.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

struct Mesh {
    std::vector<double> coords;  // x, y, z per node
    std::vector<int> types;      // gmsh element type per element
    std::vector<int> nodeStart;  // per element, first entry in nodes; one extra at the end
    std::vector<int> nodes;      // node indices (0-based), element after element
    std::vector<int> groupStart; // per element, first entry in groups; one extra at the end
    std::vector<int> groups;     // physical tags of each element
    std::map<std::pair<int, int>, std::string> names; // (dim, tag) -> name

    int NumNodes() const { return (int)coords.size() / 3; }
    int NumElements() const { return (int)types.size(); }
    // Highest dimension of any element; -1 without elements.
    int Dimension() const;
};

// Dimension of a gmsh element type this reader keeps; -1 for the others.
int ElementDimension(int nType);
// Number of nodes of a kept type.
int ElementNodes(int nType);

// Reads a whole .msh text. False with a one-line reason in error on malformed input.
bool ReadMsh(const std::string &text, Mesh &mesh, std::string &error);
// Whether the text's $MeshFormat line announces a binary file or a version this reader does
// not take, so that only gmsh can read it. A missing or garbled header is the reader's to
// report: false.
bool MshNeedsGmsh(const std::string &text);
