/* Every exported function from plain C, against the installed header. As C++, TQ_ToFile too. Silent when all
 * is well. */
#include <CodeTrans.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#define EXPECT(condition)                                       \
    if (!(condition)) {                                         \
        fprintf(stderr, "line %d: %s\n", __LINE__, #condition); \
        return 1;                                               \
    }

int main(int argc, char** argv)
{
    const char gbk[] = "\xD6\xD0\xCE\xC4\xB1\xE0\xC2\xEB\xB5\xC4\xB2\xE2\xCA\xD4";
    const char utf8[] =
        "\xE4\xB8\xAD\xE6\x96\x87\xE7\xBC\x96\xE7\xA0\x81\xE7\x9A\x84\xE6\xB5\x8B\xE8\xAF\x95";
    const size_t length = sizeof gbk - 1;
    char out[64];
    FILE* file = fopen("in.txt", "wb");
    EXPECT(file != NULL);
    fwrite(gbk, 1, length, file);
    fclose(file);

    EXPECT(TQ_Init("/nonexistent", NULL) == -2);
    EXPECT(strcmp(TQ_GetLastErrorMsg(), "/nonexistent/Data/CodeTrans.model load failure!") == 0);
    EXPECT(argc == 2 && TQ_Init(argv[1], NULL) == 1);
    EXPECT(TQ_CodeDetect(gbk, length) == ENCODE_GBK);
    EXPECT(TQ_CodeDetect(utf8, sizeof utf8 - 1) == ENCODE_UTF8);
    EXPECT(TQ_ToUnicode(gbk, length, out, 2 * length, ENCODE_GBK) == length);
    EXPECT(memcmp(out, "\x2D\x4E\x87\x65", 4) == 0);
    EXPECT(TQ_ToUtf8(gbk, length, out, 3 * length, ENCODE_GBK) == sizeof utf8 - 1);
    EXPECT(strcmp(out, utf8) == 0);
    EXPECT(TQ_ToGBK(utf8, sizeof utf8 - 1, out, sizeof out, ENCODE_UTF8) == length);
    EXPECT(strcmp(out, gbk) == 0);
    EXPECT(TQ_ToUtf8File("in.txt", "out.txt") == (int64_t)(sizeof utf8 - 1));
    EXPECT(TQ_ToUnicodeFile("in.txt", "out.txt") == (int64_t)length);
    EXPECT(TQ_ToGBKFile("in.txt", "out.txt") == (int64_t)length);
#ifdef __cplusplus
    EXPECT(TQ_ToFile("in.txt", "out.txt", ENCODE_GBK) == (int64_t)length);
#endif
    EXPECT(CODETRANS_VERSION_MAJOR == 1);
    TQ_Exit();
    return 0;
}
