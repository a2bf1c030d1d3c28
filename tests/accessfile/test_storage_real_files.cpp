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
    void readsAndChanges_data();
    void readsAndChanges();

private:
    static void change(Storage& storage);
};

void TestStorageRealFiles::initTestCase()
{
    if (sharedFolder().isEmpty())
        QSKIP("PLANILHA_REAL_FILES names no folder with real files: whole executable");
    if (!exporterInstalled())
        QSKIP("mdb-export is not installed: whole executable");
}

void TestStorageRealFiles::readsAndChanges_data()
{
    QTest::addColumn<QString>("name");
    for (const QString& name : QDir(sharedFolder()).entryList({QStringLiteral("*.mdb")}))
        QTest::newRow(qPrintable(name)) << name;
}

void TestStorageRealFiles::readsAndChanges()
{
    QFETCH(const QString, name);
    const QTemporaryDir folder;
    const QString file = folder.filePath(name);
    QVERIFY(QFile::copy(sharedFolder() + QLatin1Char('/') + name, file));
    QFile::setPermissions(file, QFile::ReadOwner | QFile::WriteOwner);
    const OpenOptions options{.password = name == QLatin1StringView("password.mdb") ? "ucanaccess" : "8282"};
    const QByteArray before = fileBytes(file);
    for (const bool changes : {false, true}) {
        {
            const auto storage = Storage::open(file.toStdString(), options);
            if (changes)
                change(*storage);
            QCOMPARE(joined(storage->verify()), QString());
        }
        const auto storage = Storage::open(file.toStdString(), options);
        std::size_t cells = 0;
        QCOMPARE(joined(storage->verify()), QString());
        QCOMPARE(exportDifference(*storage, file, &cells), QString());
        QCOMPARE(fileBytes(file) != before, changes);
        qInfo("%zu cells", cells);
    }
}

void TestStorageRealFiles::change(Storage& storage)
{
    ValueMaker maker(7);
    const std::array<Column, 3> columns = {column("codigo", ColumnType::Long), column("nome", ColumnType::Text, 40),
                                           column("obs", ColumnType::Memo)};
    storage.createTable("Criada agora", columns, std::array{index("PorNome", {{1, true}, {0, false}})});
    for (const std::string& name : storage.tableNames()) {
        // Tables that only Access may change are refused, and stay as they are.
        if (const auto refusal = errorOf([&] { storage.addColumn(name, column("mais", ColumnType::Text, 9)); })) {
            QCOMPARE(*refusal, ErrorKind::ReadOnly);
            continue;
        }
        storage.beginStatement();
        Table& table = *storage.table(name);
        std::vector<RowId> rows = rowIdsOf(table);
        for (int i = 0; i < 150; ++i) {
            const auto failure = errorOf([&] { rows.push_back(table.insert(maker.row(table.columns()))); });
            QVERIFY(!failure || *failure == ErrorKind::DuplicateKey || *failure == ErrorKind::NullNotAllowed);
        }
        for (std::size_t i = 0; i < rows.size(); ++i) {
            const auto position = maker.below(table.columns().size());
            const Column& changed = table.columns()[position];
            const Changes changes = {{static_cast<int>(position), maker.value(changed)}};
            static_cast<void>(errorOf([&] {
                if (i % 3 == 0)
                    table.erase(rows[i]);
                else if (!changed.autonumber)
                    table.update(rows[i], changes);
            }));
        }
        storage.commitStatement();
    }
}

QTEST_GUILESS_MAIN(TestStorageRealFiles)
#include "test_storage_real_files.moc"
