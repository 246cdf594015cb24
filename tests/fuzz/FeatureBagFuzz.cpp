// Fuzz target for the SDK's feature bag reader (CQvFeatureBag::StoreStringToBag) and writer:
// any text is read without a crash, and what the writer writes reads back to the same text.
//
// Input: the persistence text.

#include <cstddef>
#include <cstdint>
#include <string>

#include <QvApi_TL.h>

namespace
{
struct Library_t
{
    Library_t() { QvApi::QvApiInitialize(); }
};

struct Bag_t
{
    Bag_t() : pBag(QvApi::CreateIQvFeatureBag()) {}
    ~Bag_t() { pBag->Release(); }
    QvApi::IQvFeatureBagReleasable* const pBag;
};
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static Library_t library;
    Bag_t bag;
    try
    {
        bag.pBag->StoreStringToBag(GenICam::gcstring(reinterpret_cast<const char*>(data), size));
    }
    catch (const GenICam::GenericException&)
    {
    }
    GenICam::gcstring written;
    bag.pBag->SaveToString(written);

    Bag_t again;
    again.pBag->StoreStringToBag(written);
    GenICam::gcstring rewritten;
    again.pBag->SaveToString(rewritten);
    if (rewritten != written)
        __builtin_trap();
    return 0;
}
