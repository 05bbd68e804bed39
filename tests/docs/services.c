/* The services of examples/minimal_host.c for the programs in the documentation: its main() is put aside, and
 * what that sets up comes from the environment. */
#define main minimal_host_main
int main(int argc, char **argv);
#include "minimal_host.c"
#undef main

__attribute__((constructor)) static void Prepare(void) {
    const char *pcType = getenv("TYPE");
    g_pcDevice = getenv("CAMERA");
    if (pcType != NULL)
        g_ulModuleType = (uint32_t)strtoul(pcType, NULL, 0);
    if (OpenQueues() != 0)
        abort();
}
