/* Detects the encoding of standard input and writes the text in UTF-16LE to standard output.
 *
 *     cc convert.c $(pkg-config --cflags --libs CodeTrans) -o convert
 *     ./convert /usr/share/CodeTrans < old.txt > new.txt
 *
 * The first argument is the folder that contains Data/CodeTrans.model. At most 1 MB is converted. */
#include <CodeTrans.h>
#include <stdio.h>
#include <stdlib.h>

/* TQ_ToUnicode converts UTF-8 to four-byte units, none above U+FFFF. The first two bytes of each are
 * UTF-16LE. */
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
    static char text[1 << 20];                 /* ends with a zero byte, which UTF-8 needs */
    char* const out = malloc(4 * sizeof text); /* enough for every encoding */
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
    /* UTF-16LE is copied, and needs its own length as the capacity. */
    size = TQ_ToUnicode(text, n, out, code == ENCODE_UNICODE ? n : 2 * n, code);
    if (code == ENCODE_UTF8) size = narrow(out, size);
    fwrite(out, 1, size, stdout);
    fprintf(stderr, "encoding %d, %lu bytes in, %lu bytes out\n", code, (unsigned long)n,
            (unsigned long)size);
    free(out);
    TQ_Exit();
    return code == ENCODE_UNKNOWN;
}
