# Dates, numbers and statements for the station's generator. POSIX awk only; run with LC_ALL=C.

# Days since 1970-01-01 of a civil date.
function days_of(year, month, day,    era, of_era) {
    if (month <= 2)
        year--
    era = int(year / 400)
    of_era = year - era * 400
    return era * 146097 + of_era * 365 + int(of_era / 4) - int(of_era / 100) \
        + int((153 * (month + (month > 2 ? -3 : 9)) + 2) / 5) + day - 1 - 719468
}

# The civil date of a day number, as the back end takes it in a quoted text.
function date_text(number,    era, of_era, year_of_era, of_year, shifted, day, month, year) {
    number += 719468
    era = int(number / 146097)
    of_era = number - era * 146097
    year_of_era = int((of_era - int(of_era / 1460) + int(of_era / 36524) - int(of_era / 146096)) / 365)
    of_year = of_era - (365 * year_of_era + int(year_of_era / 4) - int(year_of_era / 100))
    shifted = int((5 * of_year + 2) / 153)
    day = of_year - int((153 * shifted + 2) / 5) + 1
    month = shifted < 10 ? shifted + 3 : shifted - 9
    year = year_of_era + era * 400 + (month <= 2)
    if (backend == "mysql")
        return sprintf("%04d-%02d-%02d", year, month, day)
    return sprintf("%02d/%02d/%04d", day, month, year)
}

# The same day as the operator reads it, for columns that hold the text of a date.
function short_date(number,    keep, text) {
    keep = backend
    backend = "access"
    text = date_text(number)
    backend = keep
    return text
}

# 0 is Sunday.
function weekday(number) {
    return (number + 4) % 7
}

# Next of a sequence in [0, 1); the same on every awk.
function chance() {
    seed = (seed * 16807) % 2147483647
    return seed / 2147483647
}

# "##,#0.00" of hundredths.
function amount(hundredths,    whole, text) {
    whole = sprintf("%d", int(hundredths / 100))
    text = ""
    while (length(whole) > 3) {
        text = "." substr(whole, length(whole) - 2) text
        whole = substr(whole, 1, length(whole) - 3)
    }
    return whole text sprintf(",%02d", hundredths % 100)
}

# Plain text of hundredths: comma, no thousands, no trailing zeros.
function plain(hundredths,    text) {
    text = sprintf("%d,%02d", int(hundredths / 100), hundredths % 100)
    sub(/,?0+$/, "", text)
    return text
}

function insert(table, columns, values) {
    print "INSERT INTO " table " (" columns ") VALUES (" values ");"
}

function quoted(text) {
    return "'" text "'"
}
