#include "bits/process.h"
#include "driver/run.h"

using namespace quorlin;

int main(int argc, char** argv) {
    const auto run_quorlin = [](int count, char** arguments) { return run(count, arguments); };
    return run_process("quorlin", run_quorlin, argc, argv);
}
