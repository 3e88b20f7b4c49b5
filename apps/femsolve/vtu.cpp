// VTK XML unstructured grid output, ASCII, for ParaView.
#include "mesh.h"

#include <cstdio>
#include <string>
#include <utility>
#include <vector>

// Writes the domain elements with point data; the fields are one value per node, or three
// (a vector) when their size is three times the node count. 0, or -1 if writing fails.
int WriteVtu(const std::string &path, const Mesh &mesh, const std::vector<int> &domain,
             const std::vector<std::pair<std::string, std::vector<double>>> &fields) {
    FILE *f = fopen(path.c_str(), "w");
    if (!f)
        return -1;
    int nNodes = mesh.NumNodes();
    fprintf(f,
            "<?xml version=\"1.0\"?>\n<VTKFile type=\"UnstructuredGrid\" version=\"0.1\" "
            "byte_order=\"LittleEndian\">\n<UnstructuredGrid>\n"
            "<Piece NumberOfPoints=\"%d\" NumberOfCells=\"%zu\">\n",
            nNodes, domain.size());
    fprintf(f, "<PointData>\n");
    for (auto &field : fields) {
        int nComp = field.second.size() == 3 * (size_t)nNodes ? 3 : 1;
        fprintf(f,
                "<DataArray type=\"Float64\" Name=\"%s\" NumberOfComponents=\"%d\" "
                "format=\"ascii\">\n",
                field.first.c_str(), nComp);
        for (double v : field.second)
            fprintf(f, "%.17g\n", v);
        fprintf(f, "</DataArray>\n");
    }
    fprintf(f, "</PointData>\n<Points>\n<DataArray type=\"Float64\" NumberOfComponents=\"3\" "
               "format=\"ascii\">\n");
    for (int p = 0; p < nNodes; p++)
        fprintf(f, "%.17g %.17g %.17g\n", mesh.coords[3 * p], mesh.coords[3 * p + 1],
                mesh.coords[3 * p + 2]);
    fprintf(f, "</DataArray>\n</Points>\n<Cells>\n"
               "<DataArray type=\"Int32\" Name=\"connectivity\" format=\"ascii\">\n");
    for (int el : domain) {
        for (int k = mesh.nodeStart[el]; k < mesh.nodeStart[el + 1]; k++)
            fprintf(f, "%d ", mesh.nodes[k]);
        fprintf(f, "\n");
    }
    fprintf(f, "</DataArray>\n<DataArray type=\"Int32\" Name=\"offsets\" format=\"ascii\">\n");
    int nOffset = 0;
    for (int el : domain) {
        nOffset += mesh.nodeStart[el + 1] - mesh.nodeStart[el];
        fprintf(f, "%d\n", nOffset);
    }
    fprintf(f, "</DataArray>\n<DataArray type=\"UInt8\" Name=\"types\" format=\"ascii\">\n");
    for (int el : domain) {
        // VTK's triangle, quad and tetra
        int t = mesh.types[el] == 2 ? 5 : mesh.types[el] == 3 ? 9 : 10;
        fprintf(f, "%d\n", t);
    }
    fprintf(f, "</DataArray>\n</Cells>\n</Piece>\n</UnstructuredGrid>\n</VTKFile>\n");
    return fclose(f) == 0 ? 0 : -1;
}
