#include "accessfile/Schedule.h"

#include "accessfile/Error.h"

namespace accesstest {

using namespace accessfile;

class ScheduledDevice : public FileDevice
{
public:
    ScheduledDevice(Schedule& schedule, int who, std::unique_ptr<FileDevice> device)
        : m_schedule(schedule)
        , m_who(who)
        , m_device(std::move(device))
    {}
    std::uint64_t size() override { return m_device->size(); }
    void read(std::uint64_t offset, std::span<std::uint8_t> to) override
    {
        m_schedule.call(m_who);
        m_device->read(offset, to);
    }
    void write(std::uint64_t offset, std::span<const std::uint8_t> from) override
    {
        m_schedule.call(m_who);
        m_device->write(offset, from);
    }
    void truncate(std::uint64_t size) override
    {
        m_schedule.call(m_who);
        m_device->truncate(size);
    }
    void sync() override
    {
        m_schedule.call(m_who);
        m_device->sync();
    }
    bool tryLock(ByteRange range) override
    {
        m_schedule.call(m_who);
        return m_device->tryLock(range);
    }
    void unlock(ByteRange range) override
    {
        m_schedule.call(m_who);
        m_device->unlock(range);
    }
    std::optional<ByteRange> lockOfOthers(ByteRange range) override
    {
        m_schedule.call(m_who);
        return m_device->lockOfOthers(range);
    }
    FileIdentity identity() override { return m_device->identity(); }
    bool openForWriting() override { return m_device->openForWriting(); }

private:
    Schedule& m_schedule;
    int m_who;
    std::unique_ptr<FileDevice> m_device;
};

class ScheduledFiles : public FileSystem
{
public:
    ScheduledFiles(Schedule& schedule, int who)
        : m_schedule(schedule)
        , m_files(schedule.m_files)
        , m_who(who)
    {}
    std::filesystem::path resolved(const std::filesystem::path& file) override { return file; }
    std::unique_ptr<FileDevice> openToRead(const std::filesystem::path& file) override
    {
        return wrapped(m_files.openToRead(file));
    }
    std::unique_ptr<FileDevice> openToWrite(const std::filesystem::path& file) override
    {
        m_schedule.call(m_who);
        return wrapped(m_files.openToWrite(file));
    }
    std::unique_ptr<FileDevice> openBeside(const std::filesystem::path& file, FileDevice& like) override
    {
        m_schedule.call(m_who);
        return wrapped(m_files.openBeside(file, like));
    }
    std::unique_ptr<FileDevice> openExisting(const std::filesystem::path& file, FileDevice& like) override
    {
        m_schedule.call(m_who);
        return wrapped(m_files.openExisting(file, like));
    }
    std::unique_ptr<FileDevice> createNew(const std::filesystem::path& file) override
    {
        return wrapped(m_files.createNew(file));
    }
    std::optional<FileIdentity> identityOf(const std::filesystem::path& file) override
    {
        return m_files.identityOf(file);
    }
    bool exists(const std::filesystem::path& file) override { return m_files.exists(file); }
    std::optional<std::filesystem::path> findIgnoringCase(const std::filesystem::path& file) override
    {
        return m_files.findIgnoringCase(file);
    }
    bool fileWritable(const std::filesystem::path& file) override { return m_files.fileWritable(file); }
    bool folderWritable(const std::filesystem::path& file) override { return m_files.folderWritable(file); }
    void remove(const std::filesystem::path& file) override
    {
        m_schedule.call(m_who);
        m_files.remove(file);
    }
    void publish(const std::filesystem::path& from, const std::filesystem::path& to) override
    {
        m_files.publish(from, to);
    }
    std::string machineName() override { return "CAIXA0" + std::to_string(m_who); }
    std::chrono::milliseconds now() override { return m_files.now(); }
    void pause(std::chrono::milliseconds time) override
    {
        m_files.pause(time);
        m_schedule.call(m_who, true);
    }

private:
    std::unique_ptr<FileDevice> wrapped(std::unique_ptr<FileDevice> device)
    {
        return device ? std::make_unique<ScheduledDevice>(m_schedule, m_who, std::move(device)) : nullptr;
    }
    Schedule& m_schedule;
    FaultyFiles& m_files;
    int m_who;
};

void Schedule::hand(int who, bool waits)
{
    std::vector<int> ready;
    for (int each = 0; each < static_cast<int>(m_ended.size()); ++each) {
        if (!m_ended[static_cast<std::size_t>(each)] && !(waits && each == who))
            ready.push_back(each);
    }
    if (ready.empty())
        return;
    m_current = ready.size() == 1 ? ready.front() : ready.at(m_choice(m_step, ready, who));
    ++m_step;
    m_turn.notify_all();
}

void Schedule::call(int who, bool waits)
{
    const auto index = static_cast<std::size_t>(who);
    // Who has been killed makes no more calls: his files are closed by the system.
    if (m_died[index])
        throw Stopped();
    std::unique_lock lock(m_mutex);
    hand(who, waits);
    m_turn.wait(lock, [&] { return m_current == who; });
    const auto death = m_deaths.find(who);
    if (m_calls[index]++ >= (death == m_deaths.end() ? SIZE_MAX : death->second)) {
        m_died[index] = true;
        throw Stopped();
    }
}

void Schedule::run(const std::vector<std::function<void(FileSystem&)>>& programs)
{
    m_ended.assign(programs.size(), false);
    m_died.assign(programs.size(), false);
    m_calls.assign(programs.size(), 0);
    m_current = 0;
    std::vector<std::thread> threads;
    for (int who = 0; who < static_cast<int>(programs.size()); ++who) {
        threads.emplace_back([&, who] {
            {
                std::unique_lock lock(m_mutex);
                m_turn.wait(lock, [&] { return m_current == who; });
            }
            std::string error;
            try {
                ScheduledFiles files(*this, who);
                programs[static_cast<std::size_t>(who)](files);
            } catch (const Stopped&) {
            } catch (const std::exception& raised) {
                error = std::to_string(who) + ": " + raised.what();
            }
            const std::unique_lock lock(m_mutex);
            if (!error.empty())
                m_error = error;
            m_ended[static_cast<std::size_t>(who)] = true;
            hand(who, true);
        });
    }
    for (std::thread& thread : threads)
        thread.join();
}

} // namespace accesstest
