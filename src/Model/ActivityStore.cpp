#include "Model/ActivityStore.h"

#include <filesystem>
#include <system_error>

namespace orvanta::ActivityStore {

const Schema& schema() {
    return Schema::current();
}

std::unique_ptr<ModelContainer> open(const QString& applicationSupport) {
    const QString folder = applicationSupport + QStringLiteral("/com.brindlework.orvanta");
    std::error_code error;
    std::filesystem::create_directories(folder.toStdString(), error);
    if (error) {
        throw ModelError(ModelError::systemDomain, error.value(),
                         QString::fromLocal8Bit(error.message()));
    }
    return std::make_unique<ModelContainer>(schema(), folder + QStringLiteral("/Activities.store"));
}

} // namespace orvanta::ActivityStore
