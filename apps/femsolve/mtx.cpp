// Matrix Market reading and writing.
#include "mtx.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sstream>

namespace {

// Next line of the text, without its end; false at the end of the text.
bool NextLine(const std::string &text, size_t &pos, std::string &line) {
    if (pos >= text.size())
        return false;
    size_t e = text.find('\n', pos);
    if (e == std::string::npos)
        e = text.size();
    line.assign(text, pos, e - pos);
    if (!line.empty() && line.back() == '\r')
        line.pop_back();
    pos = e < text.size() ? e + 1 : e; // never past the end, where counts are measured from
    return true;
}

std::string Lower(std::string s) {
    for (char &c : s)
        c = (char)tolower((unsigned char)c);
    return s;
}

bool Fail(std::string &error, const std::string &why) {
    error = why;
    return false;
}

// Parses whitespace-separated numbers of a line: nInts integers then nReals reals.
bool ParseLine(const std::string &line, int nInts, long *pInts, int nReals, double *pReals) {
    const char *p = line.c_str();
    char *e;
    for (int k = 0; k < nInts; k++) {
        errno = 0;
        pInts[k] = strtol(p, &e, 10);
        if (e == p || errno)
            return false;
        p = e;
    }
    for (int k = 0; k < nReals; k++) {
        pReals[k] = strtod(p, &e);
        if (e == p)
            return false;
        p = e;
    }
    while (*p == ' ' || *p == '\t')
        p++;
    return *p == '\0';
}

} // namespace

bool ReadMtx(const std::string &text, MtxData &data, std::string &error) {
    data = MtxData();
    size_t pos = 0;
    std::string line;
    // 1. Banner.
    if (!NextLine(text, pos, line))
        return Fail(error, "empty Matrix Market file");
    std::istringstream banner(Lower(line));
    std::string head, object, format, field, symmetry;
    banner >> head >> object >> format >> field >> symmetry;
    if (head != "%%matrixmarket" || object != "matrix")
        return Fail(error, "not a Matrix Market matrix (no %%MatrixMarket matrix banner)");
    if (format != "coordinate" && format != "array")
        return Fail(error, "unknown Matrix Market format '" + format + "'");
    if (field != "real" && field != "integer" && field != "double")
        return Fail(error, "Matrix Market field '" + field + "' is not supported (real, integer)");
    if (symmetry != "general" && symmetry != "symmetric")
        return Fail(error, "Matrix Market symmetry '" + symmetry +
                               "' is not supported (general, symmetric)");
    data.bArray = format == "array";
    data.bSymmetric = symmetry == "symmetric";

    // 2. Size line behind the comments.
    do {
        if (!NextLine(text, pos, line))
            return Fail(error, "Matrix Market file without a size line");
    } while (line.empty() || line[0] == '%');
    long sizes[3] = {0, 0, 0};
    if (!ParseLine(line, data.bArray ? 2 : 3, sizes, 0, nullptr))
        return Fail(error, "bad Matrix Market size line");
    if (sizes[0] < 0 || sizes[1] < 0 || sizes[2] < 0 || sizes[0] > 2147483647L ||
        sizes[1] > 2147483647L)
        return Fail(error, "bad Matrix Market sizes");
    if (data.bSymmetric && sizes[0] != sizes[1])
        return Fail(error, "a symmetric Matrix Market matrix must be square");
    // Each entry takes two bytes at least, so a larger count cannot be honest.
    size_t nBudget = (text.size() - pos) / 2 + 1;
    long nEntries = data.bArray ? 0 : sizes[2];
    if (data.bArray)
        nEntries = sizes[0] * sizes[1];
    if ((size_t)nEntries > nBudget)
        return Fail(error, "Matrix Market entry count larger than the file");
    data.nRows = (int)sizes[0];
    data.nCols = (int)sizes[1];

    // 3. Entries.
    data.values.reserve(nEntries);
    if (!data.bArray) {
        data.rows.reserve(nEntries);
        data.cols.reserve(nEntries);
    }
    for (long k = 0; k < nEntries;) {
        if (!NextLine(text, pos, line))
            return Fail(error, "Matrix Market file ends after " + std::to_string(k) + " of " +
                                   std::to_string(nEntries) + " entries");
        if (line.empty() || line[0] == '%')
            continue;
        if (data.bArray) {
            double v;
            if (!ParseLine(line, 0, nullptr, 1, &v))
                return Fail(error, "bad Matrix Market value: " + line.substr(0, 40));
            data.values.push_back(v);
        } else {
            long ij[2];
            double v;
            if (!ParseLine(line, 2, ij, 1, &v))
                return Fail(error, "bad Matrix Market entry: " + line.substr(0, 40));
            if (ij[0] < 1 || ij[0] > data.nRows || ij[1] < 1 || ij[1] > data.nCols)
                return Fail(error, "Matrix Market entry out of range: " + line.substr(0, 40));
            data.rows.push_back((int)ij[0] - 1);
            data.cols.push_back((int)ij[1] - 1);
            data.values.push_back(v);
        }
        k++;
    }
    return true;
}

bool WriteMtxSymmetric(const std::string &path, int n, const std::vector<int> &rows,
                       const std::vector<int> &cols, const std::vector<double> &values) {
    FILE *f = fopen(path.c_str(), "w");
    if (!f)
        return false;
    fprintf(f, "%%%%MatrixMarket matrix coordinate real symmetric\n");
    fprintf(f, "%d %d %zu\n", n, n, values.size());
    for (size_t k = 0; k < values.size(); k++)
        fprintf(f, "%d %d %.17g\n", cols[k] + 1, rows[k] + 1, values[k]);
    return fclose(f) == 0;
}

bool WriteMtxArray(const std::string &path, int nRows, int nCols,
                   const std::vector<double> &values) {
    FILE *f = fopen(path.c_str(), "w");
    if (!f)
        return false;
    fprintf(f, "%%%%MatrixMarket matrix array real general\n%d %d\n", nRows, nCols);
    for (double v : values)
        fprintf(f, "%.17g\n", v);
    return fclose(f) == 0;
}
