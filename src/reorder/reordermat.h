// CReorderMat: the node graph of a mesh and a numbering of its vertices. It is the first
// two steps of the road (graph, numbering); the pattern step reads it afterwards through
// GetRows, f_v, f_v_inv and the rows of the base.
//
// One vertex per degree of freedom, one undirected edge per pair of degrees of freedom that
// share an element. Rows hold vertex numbers, never labels (until CSystSpMat::Allocate
// rewrites them, which spends the graph). m_pLabels[v] is the label (matrix row) of v.
//
// Calling order: Alloc(n); InsertDOFs(dofs, 0, count) per element; Init();
// InsertDOFs(dofs, 1, count) per element again; a numbering (MinDegReorder..., Hager...,
// then optionally TabuReorder); PostReorder(); the matrix's Allocate.
//
// Diagnostic script: the numberings that write one on their own open the file named by
// SetScriptName ("Reord.m" in the working directory by default) with
// modeCreate | modeReadWrite | shareExclusive; if that fails they do nothing at all.
//
// Choices made here:
// - Both constructors set m_pZ to NULL and m_nZ to 0, so that nothing reads an undefined
//   value; the protected one still leaves m_nMode to the derived class.
// - The chain of SetLabels is a loop, so a chain as long as the graph costs no stack.
// - MinDegReorder, MinDegReorder2 and MinDegReorder3 find each turn's vertex (the first of
//   least score in vertex order) with minimum trees instead of scanning all vertices;
//   labels are the same, and a turn costs the neighbourhood of the numbered vertex (and a
//   log n query) instead of a pass over the whole graph.
// - UnionAdj_Ex_p_i marks the old row's vertices on their counts (complemented for the
//   moment of the union) so that the union is linear; counts are whole again on return.
// - MatlabWrite gathers its lines into blocks of some 64 KB before writing; the bytes are
//   those of one write per line.
// - MinDegReorder4 on a plain CReorderMat works on a quotient graph (eliminated vertices
//   become elements) and leaves the rows untouched, spare capacity included; its labels
//   are those of the row-by-row walk with UnionAdj_Ex_p_i, at a cost near the size of the
//   factor. A derived class, whose UnionAdj_Ex_p_i, f_v or Copy may differ, and labels
//   negative at entry get the walk itself, through the table.
// - A vertex listed in its own row (an element giving a degree of freedom twice) is no
//   neighbour of itself to MinDegReorder4, so that it still gets a label; the graph keeps
//   the entry for Check to find. The other numberings count it in the vertex's degree,
//   as described, and still give a permutation.
// - Env sums modulo 2^32 and yields that as an int, as described; Env64 is exact.
// - TabuReorder seeds its generator with AfxSrand(AfxTime()), so a test fixes its run with
//   AfxSetTimeSource. Its random start (rand() * m_nRows - 1) / 32767 is computed in 64
//   bits: the same vertex as the 32-bit product up to 65538 vertices, where that product
//   still fits, and a vertex below m_nRows beyond, where it would overflow.
// - TabuReorder2 sets m_nZ to its move counter plus 1 while it chooses a move, so that
//   IsCandidate's "mark below m_nZ" and the search's own "mark not above the counter" agree:
//   every free vertex scores its B_f, whatever an earlier operation left in m_nZ. It
//   returns with m_nZ holding the number of moves made, as TabuReorder leaves its turns.
// - During a tabu search mid finds the vertex of its middle label in a table of the vertex
//   of each label, kept along with every Move the search makes, instead of a pass over all
//   vertices; a hit is checked through f_v, and outside a search, or when the labels at the
//   start are not a permutation, mid scans as before. The vertex is the same either way.
// - Hager1 and Hager3 take their next vertex from a heap on the key their pass over Z
//   compares (count then lowest vertex; score then last position in Z), updated where a
//   numbering changes a key: the same labels for all scores that are numbers, at log n a
//   change instead of a pass over Z per label. Hager2 keeps its pass, as the yardstick
//   that Hager3 improves on.
// - The Hager reports divide by the old bandwidth and envelope in doubles as they are; for
//   a graph without edges that is 0.0 / 0.0, and the report shows what snprintf prints for
//   that NaN with "%5.1f" (" -nan" on x86-64 with glibc) in both places.
#pragma once

#include "reorder/arrayarray.h"

#include <vector>

class CReorderMat : public CArrayArray<LONG> {
public:
    LONG *m_pLabels = NULL;  // label of each vertex
    LONG *m_pInverse = NULL; // vertex of each label after PostReorder; else working storage
    LONG *m_pZ;              // work list of the Hager numberings
    int m_nZ;                // length of that list; turn counter of TabuReorder
    int m_nMode;             // 1: Alloc creates and zeroes m_pInverse

    explicit CReorderMat(int nMode);
    ~CReorderMat() override;

    // Virtual table, in slot order behind CArrayArray<LONG>'s Copy.

    // Sets the number of vertices, resets the labels to the identity and empties the graph;
    // with mode 1 also creates and zeroes m_pInverse.
    void Alloc(int nRows) override;
    // Weight of a degree for the Hager scores.
    virtual float WFun(int x);
    // Position of nValue among the entries in use of row nRow, or -1.
    virtual int Find(int nValue, int nRow);
    virtual int GetRows();
    // Vertex of label l; meaningful after PostReorder.
    virtual int f_v_inv(int l);
    // Makes m_pInverse the inverse of the labels, creating it if needed.
    virtual void PostReorder();
    // True unless some row holds a vertex twice.
    virtual bool Check();
    // Row i becomes the union of rows i and p without i and p; yields its new degree.
    virtual int UnionAdj_Ex_p_i(int i, int p);
    // Writes the pattern as a dense table in label order, for small graphs.
    virtual void WritePlotASCII(CFile *pFile);
    // Yields the envelope (sum of B_f) modulo 2^32; stores the bandwidth in *pBandwidth if
    // given. Env64 is the exact sum.
    virtual int Env(int *pBandwidth);
    // The neighbour of v to swap with: the candidate nearest the middle of v's higher
    // neighbours, first in the row on ties; v itself if none is nearer than v.
    virtual int GetClosestToMid(int v);
    // Silent tabu search over all vertices; needs the tabu marks set (InitTabu).
    virtual void TabuReorder2();
    // Yields the bandwidth; v is the first vertex reaching it (0 for bandwidth 0).
    virtual int GetB(int &v);
    // Number of neighbours of v whose tabu mark is below nLimit.
    virtual int NumMovables(int v, int nLimit);
    // Tabu search from the bandwidth-setting vertex, with report and script; needs the
    // tabu marks set (InitTabu).
    virtual void TabuReorder();
    // Between the two passes: gives every vertex its row, filled with -1, count 0.
    virtual void Init();
    // One element's degrees of freedom: nPass 0 counts, 1 inserts, other values nothing.
    // Negative numbers take no part.
    virtual void InsertDOFs(LONG *pDOFs, int nPass, int nDOFs);
    // Label of vertex v.
    virtual int f_v(int v);

protected:
    // Whether a may swap with b: b nearer a's middle than a, or b's mark below m_nZ.
    virtual bool IsCandidate(int a, int b);
    // The middle label of v's higher neighbours; v becomes the vertex holding it, if any.
    virtual int mid(int &v);
    // Swaps the labels of a and b.
    virtual void Move(int a, int b);
    // Largest label distance from v to a neighbour; 0 without neighbours.
    virtual int B_f(int v);

public:
    // The envelope as a 64-bit sum, with the bandwidth in *pBandwidth if given: the measure
    // to rely on. Env keeps its int, which wraps modulo 2^32 once the envelope passes
    // 2^31 - 1 (a 1e5-vertex plate can get there). B_f is reached through the table, as
    // in Env.
    long long Env64(int *pBandwidth);
    // Sets every label to nLabel.
    void InitLabels(int nLabel);
    // Writes one sparse matrix of the diagnostic script, positions by label.
    void MatlabWrite(CFile *pFile, CString sName);

    // Minimum-degree numberings; each leaves a permutation in m_pLabels and shows a report.
    // MinDegReorder writes its script to pFile (NULL: none) and leaves it open.
    void MinDegReorder(CFile *pFile);
    void MinDegReorder2();
    void MinDegReorder3();
    void MinDegReorder4();
    // Named in the interface without an algorithm: does nothing.
    void GenRevCuthillMcKee();

    // Numberings beside the described ones. Each runs like MinDegReorder2 (own script,
    // then the report "Used time reordering: ..." once the script is closed) and leaves a
    // permutation in m_pLabels, one component after the other in the order of their lowest
    // vertex. ReverseCuthillMcKee and SloanReorder cut bandwidth and profile and end their
    // script with the short trailer; AMDReorder cuts fill and ends it with the minimum-degree
    // trailer.
    // - ReverseCuthillMcKee: per component, George and Liu's search from its lowest vertex
    //   gives a pair: the pseudo-peripheral start and, as end, the root of the walk before
    //   it. From the start breadth first with the new neighbours of a vertex by increasing degree
    //   (ties in row order), the component's sequence reversed in place.
    // - SloanReorder: Sloan's priority nW2 * (distance to the end vertex) - nW1 * (current
    //   degree + 1), with the weights of his 1989 program (the current degree weighs
    //   twice the distance). The start and end are RCM's pair; each component is numbered
    //   from both ends and keeps the numbering of smaller profile (the first on a tie).
    //   Equal priorities go to the lower vertex. Weights are taken as non-negative.
    // - AMDReorder: SuiteSparse's approximate minimum degree with its default controls;
    //   present only when the library is built with it, which a host tests with
    //   #ifdef FEMMAT_HAS_AMD. Should AMD fail (memory), the labels stay as they were.
    void ReverseCuthillMcKee();
    void SloanReorder(int nW1 = 2, int nW2 = 1);
#ifdef FEMMAT_HAS_AMD
    void AMDReorder();
#endif

    // Sets every tabu mark (m_pInverse) to nValue.
    void InitTabu(LONG nValue);
    // Numberings from the last label down; each shows a report and writes the script.
    // Hager1 takes the vertex with most numbered neighbours, Hager2 the largest S_k,
    // Hager3 the largest of scores it keeps up to date. m_nZ is -1 after each.
    void Hager1();
    void Hager2();
    void Hager3();

    // The path of the diagnostic script of the numberings that open it themselves.
    static void SetScriptName(const char *pszName);
    static const char *GetScriptName();

protected:
    // For derived classes: like CReorderMat(int) but leaves m_nMode to be set.
    CReorderMat();

    // Numbers a chain starting at nVertex with nLabel on (see MinDegReorder4).
    int SetLabels(int nVertex, int &nLabel, int nGap);
    // Position in Z of the vertex with most numbered neighbours, lowest number on ties.
    int MinZ();
    // Hager score of an unnumbered vertex at the current m_nZ.
    float S_k(int v);
    // Number of unnumbered neighbours of v (r_k is the same).
    int d_k(int v);
    int r_k(int v);

    // Opens the diagnostic script; false when it can't be opened.
    static bool OpenScript(CFile &file);
    // Writes the closing lines of the script: the minimum-degree form ends with symmmd.
    static void WriteScriptTrailer(CFile *pFile, bool bMinDeg);
    // Ends a minimum-degree run on its own script: stops the clock, writes "after" and the
    // trailer, closes the file, then shows the report.
    void EndScriptedRun(CFile &file, LONG nStart);

    // The numberings beside the described ones without script or report: the timed part.
    void NumberRCM();
    void NumberSloan(int nW1, int nW2);
#ifdef FEMMAT_HAS_AMD
    bool NumberAMD();
#endif
    // Opens the script, writes "before" and reads the clock; false when it can't be opened.
    bool BeginOwnScriptRun(CFile &file, LONG &nStart);
    // Stops the clock, writes "after" and the trailer, closes, then shows the report.
    void EndOwnScriptRun(CFile &file, LONG nStart, bool bMinDegTrailer);

private:
    // The common frame of the Hager numberings: script, measures before, clock, all
    // vertices unnumbered; false when the script can't be opened.
    bool BeginHagerRun(CFile &file, int &nOldB, int &nOldEnv, LONG &nStart);
    // Stops the clock, measures, shows the report, then writes "after" and closes.
    void EndHagerRun(CFile &file, int nOldB, int nOldEnv, LONG nStart);
    // The vertex of label m, first in vertex order, or -1: what mid searches for.
    int FindLabel(int m);
    // Starts (bOn) or ends the label table of a tabu search.
    void TrackLabels(bool bOn);
    // Move(a, b) with the label table kept up to date.
    void TabuMove(int a, int b);

    std::vector<LONG> m_labelIndex; // during a tabu search: the vertex of each label
};
