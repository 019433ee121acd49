import QtQml

QtObject {
    required property string library
    required property string purpose
    required property string licence
}
