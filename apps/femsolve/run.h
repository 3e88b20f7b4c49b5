// One femsolve run's shared pieces: options, streams, step times, the summary, and the
// small text helpers both kinds of input use.
#pragma once

#include "femsolve.h"
#include "progress.h"
#include "road.h"

#include <iostream>
#include <ostream>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

std::string Format(const char *fmt, ...);
bool EndsWith(const std::string &s, const char *suffix);
std::string WithoutExtension(const std::string &path);
bool ReadText(const std::string &path, std::string &text);

extern std::string g_reports; // the library's timing reports of this run

// The run's shared pieces: options, streams, steps and the summary lines.
struct Run {
    const FemOptions &opt;
    std::ostream &out, &err;
    Steps steps;
    std::vector<std::pair<std::string, std::string>> facts;
    std::string scriptPath;

    Run(const FemOptions &o, std::ostream &os, std::ostream &es)
        : opt(o), out(os), err(es),
          steps(es, !o.quiet, &es == &std::cerr && isatty(STDERR_FILENO)) {}

    int Error(int status, const std::string &what) {
        err << "femsolve: " << what << "\n";
        return status;
    }
    std::string TooLarge(Road &road) {
        return Format("the skyline of %lld values does not fit; choose another --numbering "
                      "or --storage system",
                      road.m_nProfile);
    }
    void Fact(const char *name, const std::string &text) { facts.push_back({name, text}); }

    void Summary(const std::string &title) {
        if (opt.quiet)
            return;
        out << title << "\n";
        for (auto &f : facts)
            out << Format("  %-18s %s\n", f.first.c_str(), f.second.c_str());
        out << "\n  step                  seconds\n";
        for (auto &t : steps.Times())
            out << Format("  %-18s %11.3f\n", t.first.c_str(), t.second);
        out << Format("  %-18s %11.3f\n", "total", steps.Total());
        if (opt.verbose && !g_reports.empty())
            out << "\nlibrary reports:\n" << g_reports;
    }

    void RoadFacts(Road &road, int nEq, int nFixed, int nDOFs) {
        Fact("unknowns", Format("%d, prescribed %d, equations %d", nDOFs, nFixed, nEq));
        Fact("numbering",
             Format("%s: bandwidth %lld -> %lld, envelope %lld -> %lld", opt.numbering.c_str(),
                    road.m_nBandBefore, road.m_nBandAfter, road.m_nEnvBefore, road.m_nEnvAfter));
        Fact("storage", Format("%s: %ld cells assembled, %ld after factorisation",
                               opt.storage.c_str(), road.m_nCellsAssembled, road.m_nCellsFactor));
        Fact("solver", opt.solver + (opt.matrix.empty() ? ", prescribed values: " + opt.bc : ""));
    }
};

// The two kinds of input.
int RunMesh(Run &run);
int RunMatrix(Run &run);
