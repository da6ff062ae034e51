/* Standard input in whatever encoding to UTF-16LE on standard output: detect a buffer, convert a buffer.
 *
 *     cc convert.c $(pkg-config --cflags --libs CodeTrans) -o convert
 *     ./convert /usr/share/CodeTrans < old.txt > new.txt
 *
 * The first argument is the folder whose Data holds the model. */
#include <CodeTrans.h>
#include <stdio.h>
#include <stdlib.h>

/* UTF-8 becomes four-byte units; up to U+FFFF, which is all there is, two of the four say everything. */
static size_t narrow(char* units, size_t size)
{
    size_t i;
    for (i = 0; 4 * i < size; ++i) {
        units[2 * i] = units[4 * i];
        units[2 * i + 1] = units[4 * i + 1];
    }
    return size / 2;
}

int main(int argc, char** argv)
{
    static char text[1 << 20];                 /* zero after what is read: UTF-8 is read to a zero byte */
    char* const out = malloc(4 * sizeof text); /* the most that any encoding takes here */
    const size_t n = fread(text, 1, sizeof text - 1, stdin);
    size_t size;
    int code;
    if (out == NULL) return 1;
    if (TQ_Init(argc > 1 ? argv[1] : "", NULL) != 1) {
        fprintf(stderr, "%s\n", TQ_GetLastErrorMsg());
        free(out);
        return 1;
    }
    code = TQ_CodeDetect(text, n);
    /* The capacity is the source's own length for UTF-16LE, which is copied, and enough for the others. */
    size = TQ_ToUnicode(text, n, out, code == ENCODE_UNICODE ? n : 2 * n, code);
    if (code == ENCODE_UTF8) size = narrow(out, size);
    fwrite(out, 1, size, stdout);
    fprintf(stderr, "encoding %d, %lu bytes in, %lu bytes out\n", code, (unsigned long)n,
            (unsigned long)size);
    free(out);
    TQ_Exit();
    return code == ENCODE_UNKNOWN;
}
