// zr-plugin-probe PATH: loads one VST 2 plug-in, probes it and prints its description as an XML property list
// on standard output. Hosts run it so that a plug-in that crashes, hangs or ends the process takes only this
// helper with it. Whatever the plug-in itself prints goes to standard error, so that only the description
// reaches the host.
#include <zrbase/plugins/ZRVSTDescription.h>

#include <cstdio>
#include <unistd.h>

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: zr-plugin-probe PATH\n");
        return 2;
    }
    const int output = dup(STDOUT_FILENO);
    if (output < 0 || dup2(STDERR_FILENO, STDOUT_FILENO) < 0)
        return 1;

    ZRVSTDescription description;
    description.setPath(argv[1]);
    description.load();

    const std::optional<ZRData> bytes = ZRPropertyList(description.state()).dataWithFormat(ZRPropertyList::Format::XML);
    if (!bytes)
        return 1;
    size_t written = 0;
    while (written < bytes->size()) {
        const ssize_t count = write(output, bytes->data() + written, bytes->size() - written);
        if (count <= 0)
            return 1;
        written += static_cast<size_t>(count);
    }
    // The plug-in's own exit handlers and destructors are not run: what it does when unloaded cannot undo the
    // description already written, and a crash there would only cloud the exit status.
    _exit(0);
}
