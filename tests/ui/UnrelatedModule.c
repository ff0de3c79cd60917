int SomethingElse(void);

int SomethingElse(void) {
  return 1;
}
