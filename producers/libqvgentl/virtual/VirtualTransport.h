#pragma once

#include <memory>
#include <string>
#include <vector>

#include "transport/Transport.h"
#include "virtual/VirtualConfig.h"
#include "virtual/VirtualInterface.h"

namespace QvGenTL {

/// The virtual cameras configured by QVGENTL_VIRTUAL (see VirtualConfig.h).
class CVirtualTransport : public ITransport
{
public:
    explicit CVirtualTransport(const std::vector<VirtualInterfaceConfig_t>& config);
    std::vector<ITransportInterface*> Interfaces() override;

private:
    std::vector<std::unique_ptr<CVirtualInterface>> m_interfaces;
};

} // namespace QvGenTL
