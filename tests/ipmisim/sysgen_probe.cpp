// Runs one generation detection and prints the selected generation names, one
// per line. Exit status 0 whatever was detected.

#include <cstdio>
#include <set>
#include <string>

#include "CICContextEvaluator_SysGen.h"

int main() {
    CICContextEvaluator_SysGen::MapGenNameToGenValue();
    CICContextEvaluator_SysGen* evaluator = CICContextEvaluator_SysGen::GetContextEvaluatorInstance();
    if (evaluator == nullptr) return 1;
    std::set<std::string> names;
    evaluator->GetSysGenerationInventoryList(names);
    for (const std::string& name : names) std::printf("%s\n", name.c_str());
    CICContextEvaluator_SysGen::DeleteContextEvaluatorInstance();
    return 0;
}
