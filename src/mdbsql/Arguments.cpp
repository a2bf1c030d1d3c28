#include "mdbsql/Arguments.h"

#include <QCommandLineParser>

const char* const helpText = R"(Uso: mdbsql ARQUIVO [opções] [-c COMANDO | < roteiro.sql]

  -c COMANDO         executa o comando em vez de ler um roteiro da entrada padrão
  --password SENHA   senha do banco de dados
  --create           antes, cria o arquivo em branco (com a senha, se dada)
  --backup DESTINO   copia o arquivo como está agora, mesmo em uso por outros; DESTINO não pode existir
  --wait SEGUNDOS    quanto esperar por outro programa que esteja com o arquivo (10)
  --verify           confere o arquivo inteiro e mostra as falhas, e as notas: o que o Access deixa para trás e não faz
                     mal; sem -c não lê roteiro
  --help             mostra esta ajuda

No roteiro cada comando termina com ; no fim da linha; linhas que começam com -- são comentários. O primeiro
erro encerra o roteiro; os comandos anteriores a ele ficam gravados.

Comandos, sempre sobre uma tabela:
  SELECT [DISTINCT] [TOP n [PERCENT]] ... FROM ... [WHERE] [GROUP BY [HAVING]] [ORDER BY]
  INSERT INTO ... VALUES (...) ou SELECT ...    UPDATE ... SET ... [WHERE]    DELETE FROM ... [WHERE]
  CREATE TABLE    CREATE [UNIQUE] INDEX    ALTER TABLE ... ADD COLUMN    DROP TABLE
  Não há JOIN, UNION, SELECT dentro de outro comando nem SELECT INTO.

  Textos 'assim' ou "assim"; datas #mm/dd/aaaa hh:mm:ss#; nomes com espaço [assim]; decimais com ponto.
  LIKE: % qualquer trecho, _ uma letra, [a-c] uma destas, [!a-c] nenhuma destas.
  Totais: Count Sum Avg Min Max
  Funções: Abs Date Day Fix Format IIf Int IsNull LCase Left Len LTrim Mid Month Now Nz Right RTrim Time Trim UCase
  Val Year

Saída: uma linha por registro, colunas separadas por tabulação, a primeira linha com os nomes. Dentro dos textos
\t \n \r \\ são tabulação, fim de linha, retorno e barra; outros caracteres de controle aparecem como \xNN.

Código de saída: 0 tudo certo; 1 erro em um comando ou falha no arquivo; 2 argumentos errados; 3 a saída não pôde
ser gravada; 4 a conferência achou só notas.
)";

std::variant<Options, Help, Misuse> readArguments(const std::vector<std::string>& typed)
{
    const QCommandLineOption help(QStringLiteral("help"));
    const QCommandLineOption command(QStringLiteral("c"), {}, QStringLiteral("COMANDO"));
    const QCommandLineOption password(QStringLiteral("password"), {}, QStringLiteral("SENHA"));
    const QCommandLineOption create(QStringLiteral("create"));
    const QCommandLineOption backup(QStringLiteral("backup"), {}, QStringLiteral("DESTINO"));
    const QCommandLineOption wait(QStringLiteral("wait"), {}, QStringLiteral("SEGUNDOS"));
    const QCommandLineOption verify(QStringLiteral("verify"));
    QCommandLineParser parser;
    parser.addOptions({help, command, password, create, backup, wait, verify});

    QStringList arguments{QStringLiteral("mdbsql")};
    for (const std::string& argument : typed)
        arguments += QString::fromStdString(argument);
    const bool understood = parser.parse(arguments);
    if (parser.isSet(help))
        return Help();
    if (const QStringList unknown = parser.unknownOptionNames(); !unknown.isEmpty())
        return Misuse{"opção desconhecida: " + unknown.first().toStdString()};
    if (!understood)
        return Misuse{"falta o valor de uma opção"};
    const QStringList files = parser.positionalArguments();
    if (files.size() != 1)
        return Misuse{files.isEmpty() ? "falta o ARQUIVO" : "mais de um ARQUIVO"};

    Options options;
    options.file = files.first().toStdU16String();
    options.password = parser.value(password).toStdString();
    if (parser.isSet(command))
        options.command = parser.value(command).toStdString();
    if (parser.isSet(backup))
        options.backup = parser.value(backup).toStdU16String();
    if (parser.isSet(wait)) {
        bool isNumber = false;
        options.wait = parser.value(wait).toInt(&isNumber);
        if (!isNumber || *options.wait < 0)
            return Misuse{"--wait espera um número de segundos"};
    }
    options.create = parser.isSet(create);
    options.verify = parser.isSet(verify);
    return options;
}
