#pragma once

#include <iosfwd>

#include <GenApi/Persistence.h>
#include <QvApi/QvFeatureBag.h>

namespace QvApi
{
/**
 * \brief The feature bag of the SDK: the GenApi feature bag for collecting and applying values,
 *        and this class's own reader and writer of the persistence text.
 *
 * Made by CreateIQvFeatureBag(), destroyed by Release(). One thread at a time.
 */
class CQvFeatureBag final : public IQvFeatureBagReleasable
{
public:
    CQvFeatureBag() = default;
    CQvFeatureBag(const CQvFeatureBag&) = delete;
    CQvFeatureBag& operator=(const CQvFeatureBag&) = delete;

    int64_t StoreNodeMapToBag(GenApi::INodeMap* pNodeMap, int maxEntries) override;
    void StoreStringToBag(const GenICam::gcstring& text) override;
    void StoreFileToBag(const GenICam::gcstring& fileName) override;
    bool Load(GenApi::INodeMap* pNodeMap, bool verify, GenICam::gcstring_vector* pErrorList) override;
    void SaveToString(GenICam::gcstring& text) override;
    void SaveToFile(const GenICam::gcstring& fileName) override;
    void Release() override;

private:
    /// The GenApi bag with its lists opened to this class's reader and writer.
    class CFeatureBagLists : public GenApi::CFeatureBag
    {
    public:
        using GenApi::CFeatureBag::m_BagName;
        using GenApi::CFeatureBag::m_Names;
        using GenApi::CFeatureBag::m_Values;
    };

    ~CQvFeatureBag() = default;
    /// Fills the lists from persistence text (the reader).
    void ReadStream(std::istream& stream);
    /// Writes the lists as persistence text (the writer).
    void WriteStream(std::ostream& stream);

    CFeatureBagLists m_FeatureBag;
};
} // namespace QvApi
