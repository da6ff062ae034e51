/* One export too many, for the test that the check of exported names sees it. */
__attribute__((visibility("default"))) int TQ_Twelfth(void);

int TQ_Twelfth(void)
{
    return 12;
}
