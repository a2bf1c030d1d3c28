#pragma once

#include "accessfile/file/FileDevice.h"
#include "accessfile/file/Page.h"

#include <functional>
#include <map>
#include <optional>
#include <random>

namespace accesstest {

/// Name of the one data file in memory.
inline const std::filesystem::path stationFile = "posto.mdb";

/// The machine stopped: raised by the operation that did not happen any more, and by all behind it.
struct Stopped
{};

/// Files in memory that can fail at any change, or stop dead at it. What was not synced may then be lost, in whole or
/// in sectors, in any order.
class FaultyFiles : public accessfile::FileSystem
{
public:
    /// Glitch: one change fails with an input/output error, those behind it work again.
    enum class Fault { None, Stop, Full, Glitch };
    /// Lets `changes` writes, truncations, syncs and removals through; from then on every one fails as told.
    void failAfter(std::size_t changes, Fault fault);
    /// Lets `reads` reads through; the one behind them fails with an input/output error, those behind it work again.
    void failReadAfter(std::size_t reads);
    void heal()
    {
        m_fault = Fault::None;
        m_readsLeft.reset();
    }
    /// Changes since failAfter.
    [[nodiscard]] std::size_t changes() const { return m_changes; }
    [[nodiscard]] bool failed() const { return m_failed; }
    /// Power off: only what was synced, and a part of the rest, is still there.
    void loseUnsynced(std::mt19937& engine);
    void readOnlyFolder(bool on) { m_readOnlyFolder = on; }

    [[nodiscard]] accessfile::Bytes content(const std::filesystem::path& file) const;
    void setContent(const std::filesystem::path& file, accessfile::Bytes bytes);
    [[nodiscard]] std::size_t fileCount() const { return m_files.size(); }

    std::filesystem::path resolved(const std::filesystem::path& file) override { return file; }
    std::unique_ptr<accessfile::FileDevice> openToRead(const std::filesystem::path& file) override;
    std::unique_ptr<accessfile::FileDevice> openToWrite(const std::filesystem::path& file) override;
    std::unique_ptr<accessfile::FileDevice> openBeside(const std::filesystem::path& file,
                                                       accessfile::FileDevice& like) override;
    std::unique_ptr<accessfile::FileDevice> openExisting(const std::filesystem::path& file,
                                                         accessfile::FileDevice& like) override;
    std::unique_ptr<accessfile::FileDevice> createNew(const std::filesystem::path& file) override;
    std::optional<accessfile::FileIdentity> identityOf(const std::filesystem::path& file) override;
    bool exists(const std::filesystem::path& file) override { return m_files.contains(file); }
    std::optional<std::filesystem::path> findIgnoringCase(const std::filesystem::path& file) override;
    bool fileWritable(const std::filesystem::path&) override { return true; }
    bool folderWritable(const std::filesystem::path&) override { return !m_readOnlyFolder; }
    void remove(const std::filesystem::path& file) override;
    void publish(const std::filesystem::path& from, const std::filesystem::path& to) override;
    std::string machineName() override { return "CAIXA01"; }
    /// Goes on by 10 ms with every pause and stands still otherwise.
    std::chrono::milliseconds now() override { return m_clock; }
    void pause(std::chrono::milliseconds) override { m_clock += std::chrono::milliseconds(10); }

private:
    friend class FaultyDevice;
    struct Change
    {
        std::uint64_t offset = 0;
        accessfile::Bytes bytes;
        bool truncates = false;
    };
    struct File
    {
        accessfile::Bytes content;
        accessfile::Bytes durable;
        std::vector<Change> unsynced;
        std::vector<std::pair<const void*, accessfile::ByteRange>> locks;
        int writers = 0;
        std::uint64_t number = 0;
    };
    /// Counts a change; true when it may happen. `grows`: a full disk lets others through.
    void change(bool grows);
    void read();
    static void apply(accessfile::Bytes& to, const Change& change);
    std::unique_ptr<accessfile::FileDevice> device(const std::filesystem::path& file, bool writes);
    std::shared_ptr<File>& make(const std::filesystem::path& file);

    std::map<std::filesystem::path, std::shared_ptr<File>> m_files;
    Fault m_fault = Fault::None;
    std::size_t m_left = 0;
    std::optional<std::size_t> m_readsLeft;
    std::size_t m_changes = 0;
    bool m_failed = false;
    bool m_readOnlyFolder = false;
    std::uint64_t m_made = 0;
    std::chrono::milliseconds m_clock{0};
};

} // namespace accesstest
