#include "accessfile/AccessTestTools.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

using namespace accessfile;
using namespace accesstest;

/// Files of Access itself and of another writer: read cell by cell as another reader shows them, self-checked with
/// every index key computed anew, and still right after changes.
class TestStorageRealFiles : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void readsAsExported_data() { addFiles(); }
    void readsAsExported();
    void staysRightWhenChanged_data() { addFiles(); }
    void staysRightWhenChanged();

private:
    static void addFiles();
    [[nodiscard]] QString copyOf(const QString& name);
    static OpenOptions optionsFor(const QString& name);
    QTemporaryDir m_folder;
};

void TestStorageRealFiles::initTestCase()
{
    if (sharedFolder().isEmpty())
        QSKIP("PLANILHA_SHARED_DIR names no folder with real files: whole executable");
    if (!exporterInstalled())
        QSKIP("mdb-export is not installed: whole executable");
}

void TestStorageRealFiles::addFiles()
{
    QTest::addColumn<QString>("name");
    for (const QString& name : QDir(sharedFolder()).entryList({QStringLiteral("*.mdb")}))
        QTest::newRow(qPrintable(name)) << name;
}

QString TestStorageRealFiles::copyOf(const QString& name)
{
    const QString copy = m_folder.filePath(name);
    QFile::remove(copy);
    QFile::copy(sharedFolder() + QLatin1Char('/') + name, copy);
    QFile::setPermissions(copy, QFile::ReadOwner | QFile::WriteOwner);
    return copy;
}

OpenOptions TestStorageRealFiles::optionsFor(const QString& name)
{
    OpenOptions options;
    options.password = name == QLatin1StringView("password.mdb") ? "ucanaccess" : "8282";
    return options;
}

void TestStorageRealFiles::readsAsExported()
{
    QFETCH(const QString, name);
    const QString file = copyOf(name);
    const QByteArray before = fileBytes(file);
    std::size_t cells = 0;
    {
        const auto storage = Storage::open(file.toStdString(), optionsFor(name));
        QCOMPARE(joined(storage->verify()), QString());
        QCOMPARE(exportDifference(*storage, file, &cells), QString());
    }
    QCOMPARE(fileBytes(file), before);
    qInfo("%zu cells", cells);
}

void TestStorageRealFiles::staysRightWhenChanged()
{
    QFETCH(const QString, name);
    const QString file = copyOf(name);
    {
        const auto storage = Storage::open(file.toStdString(), optionsFor(name));
        ValueMaker maker(7);
        const std::array<Column, 3> columns = {column("codigo", ColumnType::Long), column("nome", ColumnType::Text, 40),
                                               column("obs", ColumnType::Memo)};
        storage->createTable("Criada agora", columns, std::array{index("PorNome", {{1, true}, {0, false}})});
        for (const std::string& tableName : storage->tableNames()) {
            // Tables that only Access may change are refused, and stay as they are.
            if (const auto refusal =
                    errorOf([&] { storage->addColumn(tableName, column("mais", ColumnType::Text, 9)); })) {
                QCOMPARE(*refusal, ErrorKind::ReadOnly);
                continue;
            }
            storage->beginStatement();
            Table& table = *storage->table(tableName);
            std::vector<RowId> rows;
            for (const auto cursor = table.scan(); cursor->next();)
                rows.push_back(cursor->rowId());
            for (int i = 0; i < 150; ++i) {
                std::vector<std::optional<Value>> values;
                for (const Column& each : table.columns())
                    values.push_back(each.autonumber ? std::nullopt : std::optional(maker.value(each)));
                const auto failure = errorOf([&] { rows.push_back(table.insert(values)); });
                QVERIFY(!failure || *failure == ErrorKind::DuplicateKey || *failure == ErrorKind::NullNotAllowed);
            }
            for (std::size_t i = 0; i < rows.size(); ++i) {
                const auto position = maker.below(table.columns().size());
                const Column& changed = table.columns()[position];
                const std::array change = {std::pair(static_cast<int>(position), maker.value(changed))};
                static_cast<void>(errorOf([&] {
                    if (i % 3 == 0)
                        table.erase(rows[i]);
                    else if (!changed.autonumber)
                        table.update(rows[i], change);
                }));
            }
            storage->commitStatement();
        }
        QCOMPARE(joined(storage->verify()), QString());
    }
    const auto storage = Storage::open(file.toStdString(), optionsFor(name));
    QCOMPARE(joined(storage->verify()), QString());
    QCOMPARE(exportDifference(*storage, file), QString());
}

QTEST_GUILESS_MAIN(TestStorageRealFiles)
#include "test_storage_real_files.moc"
