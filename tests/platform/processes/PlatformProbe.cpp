// Prints what a program finds out about its own place: executable, bundle, whether the bundle is
// there, and the path of the resource "probe.txt". Tests copy it to where they want to ask from.
#include <cstdio>

#include "platform/settings/Bundle.h"

int main() {
    using vornic::platform::Bundle;
    const Bundle bundle = Bundle::mainBundle();
    std::printf("%s\n%s\n%s\n%s\n", vornic::platform::executablePath().c_str(),
                bundle.path().c_str(), bundle.exists() ? "there" : "missing",
                bundle.pathForResource("probe", "txt").value_or("nothing").c_str());
    return 0;
}
