/* What any process costs. */
int main(void) { return 0; }
