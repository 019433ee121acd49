import QtQuick
import Varnel

Item {
}
