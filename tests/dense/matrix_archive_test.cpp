// CMatrix: the archive stream, byte for byte, and round trips through object records.
#include "matrix_helpers.h"

#include <gtest/gtest.h>

namespace {

std::vector<BYTE> Store(CMatrix &m) {
    CMemFile file;
    CArchive ar(&file, CArchive::store);
    m.Serialize(ar);
    ar.Close();
    return file.GetData();
}

void Load(CMatrix &m, const std::vector<BYTE> &bytes) {
    CMemFile file(bytes.data(), (UINT)bytes.size());
    CArchive ar(&file, CArchive::load);
    m.Serialize(ar);
    ar.Close();
}

} // namespace

TEST(MatrixArchive, StreamIsCountElementsRows) {
    CMatrix m = MakeMatrix(2, 2, {1, 2, 3, 4});
    const std::vector<BYTE> expected = {0x04, 0x00, 0x00, 0x00, // element count
                                        0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0xF0, 0x3F, // 1.0
                                        0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x40, // 2.0
                                        0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x08, 0x40, // 3.0
                                        0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x10, 0x40, // 4.0
                                        0x02, 0x00, 0x00, 0x00};                        // row count
    EXPECT_EQ(Store(m), expected);

    CMatrix empty;
    EXPECT_EQ(Store(empty), std::vector<BYTE>(8, 0));
}

TEST(MatrixArchive, LoadingKeepsAnArrayOfTheSameCount) {
    CMatrix source = MakeMatrix(2, 3, {1, 2, 3, 4, 5, 6});
    std::vector<BYTE> bytes = Store(source);

    CMatrix target(6, 1, true, 0.0);
    double *pArray = target.m_pVector;
    Load(target, bytes);
    EXPECT_EQ(target.m_pVector, pArray);
    EXPECT_EQ(target.GetRows(), 2);
    EXPECT_EQ(Flat(target), Flat(source));

    // Another count replaces the array; an empty stream empties the matrix.
    CMatrix other(2, 2, true, 0.0);
    Load(other, bytes);
    EXPECT_EQ(other.GetColumns(), 3);
    EXPECT_EQ(Flat(other), Flat(source));
    CMatrix empty;
    Load(other, Store(empty));
    EXPECT_EQ(other.m_pVector, nullptr);
    EXPECT_EQ(other.GetRows(), 0);
}

TEST(MatrixArchive, ObjectRecordsRoundTrip) {
    CMatrix m = MakeMatrix(3, 2, {1.5, -2, 0, 4, 1e300, -0.0});
    CMemFile file;
    {
        CArchive ar(&file, CArchive::store);
        ar << &m << &m;
        ar.WriteObject(NULL);
        ar.Close();
    }
    file.SeekToBegin();
    CArchive ar(&file, CArchive::load);
    CMatrix *pFirst = NULL, *pSecond = NULL, *pNull = &m;
    ar >> pFirst >> pSecond >> pNull;
    ar.Close();
    ASSERT_NE(pFirst, nullptr);
    EXPECT_EQ(pFirst, pSecond);
    EXPECT_EQ(pNull, nullptr);
    EXPECT_TRUE(pFirst->IsKindOf(RUNTIME_CLASS(CMatrix)));
    EXPECT_EQ(pFirst->GetRows(), 3);
    EXPECT_TRUE(*pFirst == m);
    delete pFirst;

    // Created by name, empty.
    CObject *pObject = CRuntimeClass::FromName("CMatrix")->CreateObject();
    CMatrix *pCreated = static_cast<CMatrix *>(pObject);
    EXPECT_EQ(pCreated->GetRows(), 0);
    EXPECT_EQ(pCreated->m_nSize, 0);
    EXPECT_EQ(CMatrix::classCMatrix.m_wSchema, 1u);
    delete pObject;
}
