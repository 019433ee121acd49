import QtQml

QtObject {
    required property string keys
    required property string label
}
