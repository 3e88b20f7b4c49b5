// femsolve on a Matrix Market system: the road without a mesh.
#include "mtx.h"
#include "run.h"

#include <cmath>
#include <unordered_map>

namespace {

int ReadMtxFile(Run &run, const std::string &path, MtxData &data) {
    std::string text, error;
    if (!ReadText(path, text))
        return run.Error(kExitNoFile, "cannot open " + path);
    if (!ReadMtx(text, data, error))
        return run.Error(kExitBadInput, path + ": " + error);
    return kExitOk;
}

} // namespace

int RunMatrix(Run &run) {
    const FemOptions &opt = run.opt;
    run.steps.Begin("read system");
    MtxData A, B;
    int status = ReadMtxFile(run, opt.matrix, A);
    if (status != kExitOk)
        return status;
    if (A.bArray || A.nRows != A.nCols)
        return run.Error(kExitBadInput, opt.matrix + ": the system matrix must be square and "
                                                     "in coordinate form");
    int n = A.nRows;
    // A general file must hold a symmetric matrix: the solvers read one triangle.
    if (!A.bSymmetric) {
        std::unordered_map<unsigned long long, double> sum;
        for (size_t k = 0; k < A.values.size(); k++)
            sum[(unsigned long long)A.rows[k] * n + A.cols[k]] += A.values[k];
        for (auto &e : sum) {
            unsigned long long i = e.first / n, j = e.first % n;
            auto t = sum.find(j * n + i);
            double v = t == sum.end() ? 0.0 : t->second;
            if (std::fabs(v - e.second) > 1e-12 * std::fmax(std::fabs(v), std::fabs(e.second)))
                return run.Error(kExitBadInput, opt.matrix + ": the matrix is not symmetric");
        }
    }
    // The triangle that stands for both.
    auto counts = [&](size_t k) { return A.bSymmetric || A.rows[k] <= A.cols[k]; };
    int nRhs = 1;
    std::vector<double> b;
    if (!opt.rhs.empty()) {
        status = ReadMtxFile(run, opt.rhs, B);
        if (status != kExitOk)
            return status;
        if (B.nRows != n || B.nCols < 1)
            return run.Error(kExitBadInput,
                             Format("%s: %d rows, the matrix has %d", opt.rhs.c_str(), B.nRows, n));
        nRhs = B.nCols;
        b.assign((size_t)n * nRhs, 0.0);
        if (B.bArray)
            b = B.values;
        else
            for (size_t k = 0; k < B.values.size(); k++)
                b[(size_t)B.cols[k] * n + B.rows[k]] += B.values[k];
    } else {
        // A known solution of ones.
        b.assign(n, 0.0);
        for (size_t k = 0; k < A.values.size(); k++)
            if (counts(k)) {
                b[A.rows[k]] += A.values[k];
                if (A.rows[k] != A.cols[k])
                    b[A.cols[k]] += A.values[k];
            }
    }

    run.steps.Begin("graph");
    Road road(opt, n, nRhs);
    road.Graph([&](const std::function<void(LONG *, int)> &visit) {
        for (size_t k = 0; k < A.values.size(); k++)
            if (counts(k) && A.rows[k] != A.cols[k]) {
                LONG pair[2] = {A.rows[k], A.cols[k]};
                visit(pair, 2);
            }
    });
    run.steps.Begin("numbering");
    road.Number();
    run.steps.Begin("pattern");
    if (!road.Pattern())
        return run.Error(kExitTooLarge, run.TooLarge(road));
    run.steps.Begin("assembly");
    for (size_t k = 0; k < A.values.size(); k++)
        if (counts(k))
            road.AddEntry(A.rows[k], A.cols[k], A.values[k]);
    for (int c = 0; c < nRhs; c++)
        for (int i = 0; i < n; i++)
            road.Rhs(i, c) = b[(size_t)c * n + i];
    if (!opt.exportPath.empty()) {
        run.steps.Begin("export");
        std::vector<int> rows, cols;
        std::vector<double> vals, rhs;
        road.Export(rows, cols, vals, rhs);
        if (!WriteMtxSymmetric(opt.exportPath, n, rows, cols, vals) ||
            !WriteMtxArray(WithoutExtension(opt.exportPath) + "_rhs.mtx", n, nRhs, rhs))
            return run.Error(kExitWrite, "cannot write " + opt.exportPath);
    }
    if (opt.noSolve)
        return kExitOk;
    run.steps.Begin("solve");
    std::string why;
    status = road.Solve(why);
    if (status != kExitOk)
        return run.Error(status, (status == kExitSingular ? "singular system: " : "") + why);
    std::vector<double> x((size_t)n * nRhs);
    for (int c = 0; c < nRhs; c++)
        for (int i = 0; i < n; i++)
            x[(size_t)c * n + i] = road.Solution(i, c);

    run.steps.Begin("residual");
    std::vector<double> r(b);
    for (size_t k = 0; k < A.values.size(); k++)
        if (counts(k))
            for (int c = 0; c < nRhs; c++) {
                size_t o = (size_t)c * n;
                r[o + A.rows[k]] -= A.values[k] * x[o + A.cols[k]];
                if (A.rows[k] != A.cols[k])
                    r[o + A.cols[k]] -= A.values[k] * x[o + A.rows[k]];
            }
    double rMax = 0, bMax = 0;
    for (size_t k = 0; k < r.size(); k++) {
        rMax = std::fmax(rMax, std::fabs(r[k]));
        bMax = std::fmax(bMax, std::fabs(b[k]));
    }
    if (!opt.solution.empty()) {
        run.steps.Begin("write");
        if (!WriteMtxArray(opt.solution, n, nRhs, x))
            return run.Error(kExitWrite, "cannot write " + opt.solution);
    }
    run.steps.End();
    run.RoadFacts(road, n, 0, n);
    run.Fact("residual", Format("%.3e (max |A x - b| / max |b|)", bMax > 0 ? rMax / bMax : rMax));
    if (opt.rhs.empty()) {
        double e = 0;
        for (double v : x)
            e = std::fmax(e, std::fabs(v - 1.0));
        run.Fact("error", Format("%.3e (right-hand side A * ones, max |x - 1|)", e));
    }
    if (!opt.solution.empty())
        run.Fact("output", opt.solution);
    run.Summary(Format("femsolve: system %s, %d equations, %d right-hand side%s",
                       opt.matrix.c_str(), n, nRhs, nRhs == 1 ? "" : "s"));
    return kExitOk;
}
