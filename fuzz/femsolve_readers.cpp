// femsolve's two text readers on arbitrary bytes: the first byte picks the gmsh mesh reader
// or the Matrix Market reader, the rest is the file. Any outcome but a clean result or a
// reported error is a finding. The readers' sources are compiled in here.
#include "../apps/femsolve/mesh_msh.cpp"
#include "../apps/femsolve/mtx.cpp"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size == 0)
        return 0;
    std::string text((const char *)data + 1, size - 1);
    std::string error;
    if (data[0] & 1) {
        Mesh mesh;
        bool bGmsh = MshNeedsGmsh(text);
        if (ReadMsh(text, mesh, error)) {
            // What the program relies on: elements refer to nodes that exist, and what the
            // reader takes is never handed to gmsh.
            for (int node : mesh.nodes)
                if (node < 0 || node >= mesh.NumNodes())
                    __builtin_trap();
            if (bGmsh)
                __builtin_trap();
        }
    } else {
        MtxData mtx;
        if (ReadMtx(text, mtx, error))
            for (size_t k = 0; k < mtx.rows.size(); k++)
                if (mtx.rows[k] >= mtx.nRows || mtx.cols[k] >= mtx.nCols)
                    __builtin_trap();
    }
    return 0;
}
