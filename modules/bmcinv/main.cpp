#include "BmcInventory.h"

#ifdef SVM_HAVE_BQMIPMI
#include "BqmIpmiTransport.h"
using Transport = svm::BqmIpmiTransport;
#else
#include "NoIpmiTransport.h"
using Transport = svm::NoIpmiTransport;
#endif

int main(int argc, char** argv) {
    return svm::RunModule(argc, argv, "bmcinv",
                          "Reports the management controller's firmware revision over IPMI.",
                          [](const svm::ModuleOptions& options, svm::SvmDocument& doc) {
                              Transport transport;
                              svm::CollectBmcInventory(options, doc, transport);
                          });
}
