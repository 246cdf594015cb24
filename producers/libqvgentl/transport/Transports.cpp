// The one place that knows which transports the producer has.
#include "transport/Transport.h"

#include "virtual/VirtualTransport.h"

namespace QvGenTL {

std::vector<std::unique_ptr<ITransport>> CreateTransports()
{
    std::vector<std::unique_ptr<ITransport>> transports;
    transports.push_back(std::make_unique<CVirtualTransport>(VirtualConfigFromEnvironment()));
    return transports;
}

} // namespace QvGenTL
