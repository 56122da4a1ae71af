// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>
#include <QWidget>
#include <memory>
#include <string>

/// A window form: the widgets that a `.ui` file in the resource folder describes. Main thread only.
class ZPKForm {
public:
    /// Loads `<folder>/<name>`. The folder's path is taken byte for byte: the toolkit's own texts cannot
    /// hold one that is no UTF-8.
    ZPKForm(const std::string& folder, const std::string& name);

    /// The object of that name, owned by the form's root; null when the form has none such.
    template <class Object>
    Object* find(const char* name) {
        Object* object = m_root ? m_root->findChild<Object*>(QLatin1String(name)) : nullptr;
        if (object == nullptr) {
            fail(QStringLiteral("it has no %1 named %2")
                     .arg(QLatin1String(Object::staticMetaObject.className()), QLatin1String(name)));
        }
        return object;
    }

    /// The root, owned by the caller from now on; null when it is no `Root`.
    template <class Root>
    std::unique_ptr<Root> takeRoot() {
        Root* root = qobject_cast<Root*>(m_root.get());
        if (root == nullptr) {
            fail(
                QStringLiteral("its window is no %1").arg(QLatin1String(Root::staticMetaObject.className())));
            return nullptr;
        }
        static_cast<void>(m_root.release());
        return std::unique_ptr<Root>(root);
    }

    /// Whether the form was loaded and everything asked of it was there; if not, a line on standard
    /// error names the file and the first thing that was wrong.
    bool check() const;

private:
    void fail(const QString& reason);

    const std::string m_path;
    std::unique_ptr<QWidget> m_root;
    QString m_failure;
};
