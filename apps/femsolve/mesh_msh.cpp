// Reader of gmsh ASCII meshes, versions 2.2 and 4.1.
#include "mesh.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <unordered_map>

int ElementDimension(int nType) {
    switch (nType) {
    case 15:
        return 0;
    case 1:
        return 1;
    case 2:
    case 3:
        return 2;
    case 4:
        return 3;
    default:
        return -1;
    }
}

int ElementNodes(int nType) {
    switch (nType) {
    case 15:
        return 1;
    case 1:
        return 2;
    case 2:
        return 3;
    case 3:
    case 4:
        return 4;
    default:
        return 0;
    }
}

// Nodes per element for gmsh's low-order types, so that a skipped element can be stepped over.
static int GmshNodes(int nType) {
    static const int counts[] = {0, 2, 3, 4, 4, 8, 6, 5, 3, 6, 9, 10, 27, 18, 14, 1, 8, 20, 15, 13};
    if (nType >= 0 && nType < (int)(sizeof counts / sizeof counts[0]))
        return counts[nType];
    return -1;
}

int Mesh::Dimension() const {
    int d = -1;
    for (int t : types)
        if (ElementDimension(t) > d)
            d = ElementDimension(t);
    return d;
}

namespace {

// 2 or 4 for the versions read here, 0 for the others.
int BuiltInVersion(const std::string &v) {
    if (v == "2.2" || v == "2.1" || v == "2")
        return 2;
    return v == "4.1" ? 4 : 0;
}

// Whitespace-separated tokens over the text, with line access for section markers.
class Scanner {
public:
    explicit Scanner(const std::string &text) : m_p(text.c_str()), m_pEnd(m_p + text.size()) {}

    void SkipSpace() {
        while (m_p < m_pEnd && (*m_p == ' ' || *m_p == '\t' || *m_p == '\r' || *m_p == '\n'))
            m_p++;
    }
    bool AtEnd() {
        SkipSpace();
        return m_p >= m_pEnd;
    }
    size_t Remaining() const { return (size_t)(m_pEnd - m_p); }
    std::string Word() {
        SkipSpace();
        const char *s = m_p;
        while (m_p < m_pEnd && !isspace((unsigned char)*m_p))
            m_p++;
        return std::string(s, m_p);
    }
    std::string Line() {
        SkipSpace();
        const char *s = m_p;
        while (m_p < m_pEnd && *m_p != '\n')
            m_p++;
        std::string line(s, m_p);
        while (!line.empty() && (line.back() == '\r' || line.back() == ' '))
            line.pop_back();
        return line;
    }
    bool Long(long &v) {
        SkipSpace();
        if (m_p >= m_pEnd || *m_p == '$')
            return false;
        char *e;
        errno = 0;
        v = strtol(m_p, &e, 10);
        if (e == m_p || errno || (e < m_pEnd && !isspace((unsigned char)*e)))
            return false;
        m_p = e;
        return true;
    }
    bool Int(int &v, long lo = -2147483647L, long hi = 2147483647L) {
        long l;
        if (!Long(l) || l < lo || l > hi)
            return false;
        v = (int)l;
        return true;
    }
    bool Double(double &v) {
        SkipSpace();
        if (m_p >= m_pEnd || *m_p == '$')
            return false;
        char *e;
        v = strtod(m_p, &e);
        if (e == m_p || (e < m_pEnd && !isspace((unsigned char)*e)))
            return false;
        m_p = e;
        return true;
    }
    // Moves behind the line that is exactly sEnd; false if there is none.
    bool SkipTo(const char *sEnd) {
        while (!AtEnd())
            if (Line() == sEnd)
                return true;
        return false;
    }

private:
    const char *m_p;
    const char *m_pEnd;
};

struct Reader {
    Scanner s;
    Mesh &mesh;
    std::string &error;
    int nVersion = 0; // 2 or 4
    std::unordered_map<long, int> nodeIndex;
    std::map<std::pair<int, int>, std::vector<int>> entityGroups; // 4.1: (dim, entity) -> tags

    Reader(const std::string &text, Mesh &m, std::string &e) : s(text), mesh(m), error(e) {}

    bool Fail(const std::string &why) {
        error = why;
        return false;
    }
    // A count that the rest of the input can hold, at nBytes per entry at least.
    bool Count(long &n, size_t nBytes, const char *what) {
        if (!s.Long(n) || n < 0 || (size_t)n > s.Remaining() / nBytes)
            return Fail(std::string("bad ") + what + " count");
        return true;
    }
    bool End(const char *sEnd) {
        if (s.Line() != sEnd)
            return Fail(std::string("missing ") + sEnd);
        return true;
    }

    bool Format() {
        std::string v = s.Word();
        int nFile, nSize;
        if (!s.Int(nFile) || !s.Int(nSize))
            return Fail("bad $MeshFormat");
        if (nFile != 0)
            return Fail("a binary .msh needs femsolve built with gmsh's API; or save as ASCII");
        nVersion = BuiltInVersion(v);
        if (nVersion == 0)
            return Fail(".msh version " + v + " needs femsolve built with gmsh's API (2.2 and " +
                        "4.1 ASCII are read without it)");
        return End("$EndMeshFormat");
    }

    bool PhysicalNames() {
        long n;
        if (!Count(n, 6, "physical name"))
            return false;
        for (long i = 0; i < n; i++) {
            int nDim, nTag;
            if (!s.Int(nDim, 0, 3) || !s.Int(nTag))
                return Fail("bad $PhysicalNames entry");
            std::string name = s.Line();
            if (name.size() >= 2 && name.front() == '"' && name.back() == '"')
                name = name.substr(1, name.size() - 2);
            mesh.names[{nDim, nTag}] = name;
        }
        return End("$EndPhysicalNames");
    }

    bool Entities() {
        long counts[4];
        for (long &c : counts)
            if (!Count(c, 8, "entity"))
                return false;
        for (int nDim = 0; nDim < 4; nDim++)
            for (long i = 0; i < counts[nDim]; i++) {
                int nTag;
                double d;
                if (!s.Int(nTag))
                    return Fail("bad $Entities entry");
                for (int k = 0; k < (nDim == 0 ? 3 : 6); k++)
                    if (!s.Double(d))
                        return Fail("bad $Entities box");
                long nPhys;
                if (!Count(nPhys, 2, "physical tag"))
                    return false;
                std::vector<int> &tags = entityGroups[{nDim, nTag}];
                for (long k = 0; k < nPhys; k++) {
                    int t;
                    if (!s.Int(t))
                        return Fail("bad physical tag");
                    tags.push_back(t);
                }
                if (nDim > 0) {
                    long nBound, b;
                    if (!Count(nBound, 2, "bounding entity"))
                        return false;
                    for (long k = 0; k < nBound; k++)
                        if (!s.Long(b))
                            return Fail("bad bounding entity");
                }
            }
        return End("$EndEntities");
    }

    bool AddNode(long nTag, double x, double y, double z) {
        if (!nodeIndex.emplace(nTag, mesh.NumNodes()).second)
            return Fail("node " + std::to_string(nTag) + " given twice");
        mesh.coords.insert(mesh.coords.end(), {x, y, z});
        return true;
    }

    bool Nodes2() {
        long n;
        if (!Count(n, 8, "node"))
            return false;
        mesh.coords.reserve(3 * n);
        for (long i = 0; i < n; i++) {
            long nTag;
            double x, y, z;
            if (!s.Long(nTag) || !s.Double(x) || !s.Double(y) || !s.Double(z))
                return Fail("bad node line");
            if (!AddNode(nTag, x, y, z))
                return false;
        }
        return End("$EndNodes");
    }

    bool Nodes4() {
        long nBlocks, nNodes, nMin, nMax;
        if (!Count(nBlocks, 8, "node block") || !Count(nNodes, 8, "node") || !s.Long(nMin) ||
            !s.Long(nMax))
            return Fail("bad $Nodes header");
        mesh.coords.reserve(3 * nNodes);
        for (long b = 0; b < nBlocks; b++) {
            int nDim, nEntity, nParam;
            long n;
            if (!s.Int(nDim, 0, 3) || !s.Int(nEntity) || !s.Int(nParam, 0, 1) ||
                !Count(n, 8, "node"))
                return Fail("bad node block");
            std::vector<long> tags(n);
            for (long &t : tags)
                if (!s.Long(t))
                    return Fail("bad node tag");
            int nCoords = 3 + (nParam ? nDim : 0);
            for (long t : tags) {
                double c[6] = {0, 0, 0, 0, 0, 0};
                for (int k = 0; k < nCoords; k++)
                    if (!s.Double(c[k]))
                        return Fail("bad node coordinates");
                if (!AddNode(t, c[0], c[1], c[2]))
                    return false;
            }
        }
        return End("$EndNodes");
    }

    // Keeps an element of a type we use; its node tags must be known.
    bool AddElement(int nType, const long *pTags, const std::vector<int> &tags) {
        if (ElementDimension(nType) < 0)
            return true;
        for (int k = 0; k < ElementNodes(nType); k++) {
            auto it = nodeIndex.find(pTags[k]);
            if (it == nodeIndex.end())
                return Fail("element refers to unknown node " + std::to_string(pTags[k]));
            mesh.nodes.push_back(it->second);
        }
        mesh.types.push_back(nType);
        mesh.nodeStart.push_back((int)mesh.nodes.size());
        mesh.groups.insert(mesh.groups.end(), tags.begin(), tags.end());
        mesh.groupStart.push_back((int)mesh.groups.size());
        return true;
    }

    bool Elements2() {
        long n;
        if (!Count(n, 8, "element"))
            return false;
        for (long i = 0; i < n; i++) {
            long nTag, t;
            int nType, nTags;
            if (!s.Long(nTag) || !s.Int(nType) || !s.Int(nTags, 0, 64))
                return Fail("bad element line");
            std::vector<int> groups;
            for (int k = 0; k < nTags; k++) {
                if (!s.Long(t))
                    return Fail("bad element tag");
                if (k == 0 && t != 0)
                    groups.push_back((int)t);
            }
            int nNodes = GmshNodes(nType);
            if (nNodes < 0)
                return Fail("unknown element type " + std::to_string(nType));
            long tags[27];
            for (int k = 0; k < nNodes; k++)
                if (!s.Long(tags[k]))
                    return Fail("bad element nodes");
            if (!AddElement(nType, tags, groups))
                return false;
        }
        return End("$EndElements");
    }

    bool Elements4() {
        long nBlocks, nElements, nMin, nMax;
        if (!Count(nBlocks, 8, "element block") || !Count(nElements, 8, "element") ||
            !s.Long(nMin) || !s.Long(nMax))
            return Fail("bad $Elements header");
        for (long b = 0; b < nBlocks; b++) {
            int nDim, nEntity, nType;
            long n;
            if (!s.Int(nDim, 0, 3) || !s.Int(nEntity) || !s.Int(nType) || !Count(n, 4, "element"))
                return Fail("bad element block");
            int nNodes = GmshNodes(nType);
            if (nNodes < 0)
                return Fail("unknown element type " + std::to_string(nType));
            auto it = entityGroups.find({nDim, nEntity});
            static const std::vector<int> none;
            const std::vector<int> &groups = it == entityGroups.end() ? none : it->second;
            for (long i = 0; i < n; i++) {
                long nTag, tags[27];
                if (!s.Long(nTag))
                    return Fail("bad element tag");
                for (int k = 0; k < nNodes; k++)
                    if (!s.Long(tags[k]))
                        return Fail("bad element nodes");
                if (!AddElement(nType, tags, groups))
                    return false;
            }
        }
        return End("$EndElements");
    }

    bool Run() {
        mesh = Mesh();
        mesh.nodeStart.push_back(0);
        mesh.groupStart.push_back(0);
        bool bFormat = false, bNodes = false;
        while (!s.AtEnd()) {
            std::string sec = s.Line();
            if (sec.empty() || sec[0] != '$')
                return Fail("expected a section, found '" + sec.substr(0, 40) + "'");
            bool ok = true;
            if (sec == "$MeshFormat") {
                ok = Format();
                bFormat = ok;
            } else if (!bFormat) {
                return Fail("not a gmsh mesh: no $MeshFormat first");
            } else if (sec == "$PhysicalNames") {
                ok = PhysicalNames();
            } else if (sec == "$Entities" && nVersion == 4) {
                ok = Entities();
            } else if (sec == "$Nodes") {
                if (bNodes)
                    return Fail("second $Nodes section");
                ok = nVersion == 4 ? Nodes4() : Nodes2();
                bNodes = true;
            } else if (sec == "$Elements") {
                if (!bNodes)
                    return Fail("$Elements before $Nodes");
                ok = nVersion == 4 ? Elements4() : Elements2();
            } else if (!s.SkipTo(("$End" + sec.substr(1)).c_str())) {
                return Fail("section " + sec.substr(0, 40) + " has no end");
            }
            if (!ok)
                return false;
        }
        if (!bFormat)
            return Fail("not a gmsh mesh: no $MeshFormat");
        if (mesh.NumElements() == 0)
            return Fail("no points, lines, triangles, quadrangles or tetrahedra in the mesh");
        return true;
    }
};

} // namespace

bool ReadMsh(const std::string &text, Mesh &mesh, std::string &error) {
    Reader r(text, mesh, error);
    return r.Run();
}

bool MshNeedsGmsh(const std::string &text) {
    Scanner s(text);
    if (s.Line() != "$MeshFormat")
        return false;
    std::string v = s.Word();
    int nFile;
    if (!s.Int(nFile))
        return false;
    return nFile != 0 || BuiltInVersion(v) == 0;
}
