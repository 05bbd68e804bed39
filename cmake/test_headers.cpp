// Nothing to run: a program, so that the test framework's precompiled headers are compiled as those of the
// tests.
int main() {
    return 0;
}
