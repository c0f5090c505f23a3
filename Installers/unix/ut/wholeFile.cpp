#include "ut/wholeFile.h"

enum { PIECE_SIZE = 16384 };

int OV_instReadWhole(FILE *pFile, std::string *pText)
{
    char caPiece[PIECE_SIZE];
    size_t iRead;

    while ((iRead = fread(caPiece, 1, sizeof caPiece, pFile)) > 0)
        pText->append(caPiece, iRead);
    return ferror(pFile) ? -1 : 0;
}

int OV_instCopyWhole(FILE *pFrom, FILE *pTo)
{
    std::string text;

    if (OV_instReadWhole(pFrom, &text) < 0)
        return -1;
    return fwrite(text.data(), 1, text.size(), pTo) == text.size() ? 0 : -1;
}
