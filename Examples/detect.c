/* Names the encoding of standard input's first 64 KB: detect DIRECTORY < FILE, where DIRECTORY/Data holds the
 * model. */
#include <CodeTrans.h>
#include <stdio.h>

int main(int argc, char** argv)
{
    static char text[65536];
    if (TQ_Init(argc > 1 ? argv[1] : "", NULL) != 1) {
        fprintf(stderr, "%s\n", TQ_GetLastErrorMsg());
        return 1;
    }
    printf("%d\n", TQ_CodeDetect(text, fread(text, 1, sizeof text, stdin)));
    TQ_Exit();
    return 0;
}
