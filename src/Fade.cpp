#include "Fade.h"

#include <QGraphicsOpacityEffect>
#include <QVariantAnimation>
#include <QWidget>

Fade::Fade(QWidget& target, double opacity)
    : QObject(&target)
    , m_effect(new QGraphicsOpacityEffect)
    , m_animation(new QVariantAnimation(this))
{
    m_effect->setOpacity(opacity);
    target.setGraphicsEffect(m_effect);
    connect(m_animation, &QVariantAnimation::valueChanged, this,
            [this](const QVariant& value) { m_effect->setOpacity(value.toDouble()); });
}

double Fade::opacity() const
{
    return m_effect->opacity();
}

void Fade::set(double opacity)
{
    m_animation->stop();
    m_effect->setOpacity(opacity);
}

void Fade::animateTo(double opacity, std::chrono::milliseconds duration)
{
    m_animation->stop();
    m_animation->setStartValue(m_effect->opacity());
    m_animation->setEndValue(opacity);
    m_animation->setDuration(static_cast<int>(duration.count()));
    m_animation->start();
}
