<?xml version="1.0" encoding="UTF-8"?>
<!--
  Dorvane: the preview of the time entries fetched from the handheld, before they are booked.

  Receives the root element of the fetched file, Dorvane_PDA (the worker in Employee, the
  recorded entries in TimeTracks/TimeTrack, layout in HandheldFormat.htm). Writes a whole HTML
  page: a strip that says whose entries these are, how many and how long in all, and what the
  import does with them; then one table per day, in the order the days first appear, with
  the day's entries (customer or job, service item, payroll item, duration, billable, notes)
  and below them the day's total per customer and the day's total.

  Durations are read as "PT2H30M" (seconds are dropped) or "2:30" and shown as hours and
  minutes ("2:30").
-->
<xsl:stylesheet version="1.0"
    xmlns:xsl="http://www.w3.org/1999/XSL/Transform"
    xmlns:exsl="http://exslt.org/common"
    exclude-result-prefixes="exsl">

  <xsl:import href="document-parts.xslt"/>

  <xsl:output method="html" indent="no" encoding="US-ASCII"/>

  <xsl:key name="day" match="TimeTrack" use="normalize-space(Date)"/>

  <xsl:template match="/">
    <xsl:apply-templates select="*"/>
  </xsl:template>

  <xsl:template match="*">
    <xsl:variable name="worker" select="normalize-space(Employee/Name)"/>
    <xsl:variable name="entries" select="TimeTracks/TimeTrack"/>
    <xsl:variable name="all-minutes">
      <xsl:for-each select="$entries">
        <m><xsl:call-template name="minutes"><xsl:with-param name="text" select="normalize-space(Duration)"/></xsl:call-template></m>
      </xsl:for-each>
    </xsl:variable>
    <html>
      <head><title><xsl:value-of select="concat('Time entries of ', $worker)"/></title></head>
      <body style="margin:16px;background-color:#ffffff;">
        <table width="660" cellpadding="0" cellspacing="0" border="0" style="{$page-style}margin-bottom:22px;">
          <tr>
            <td style="padding:10px 12px;background-color:{$shade};border-left:4px solid {$accent};">
              <div style="{$label-style}">Import preview</div>
              <div style="padding:4px 0 2px 0;font-size:15px;">
                <xsl:text>Time entries of </xsl:text>
                <b><xsl:value-of select="$worker"/></b>
                <xsl:text> from the handheld</xsl:text>
              </div>
              <div>
                <xsl:value-of select="count($entries)"/>
                <xsl:choose>
                  <xsl:when test="count($entries) = 1"> entry, </xsl:when>
                  <xsl:otherwise> entries, </xsl:otherwise>
                </xsl:choose>
                <b><xsl:call-template name="hours"><xsl:with-param name="minutes" select="sum(exsl:node-set($all-minutes)/m)"/></xsl:call-template></b>
                <xsl:text> hours in all. Dorvane books each entry as a time-tracking entry of this employee in QuickBooks.</xsl:text>
              </div>
            </td>
          </tr>
        </table>
        <xsl:if test="not($entries)">
          <p style="font-family:Arial,Helvetica,sans-serif;font-size:13px;">The handheld recorded no time entries since the last sync.</p>
        </xsl:if>
        <xsl:for-each select="$entries[generate-id() = generate-id(key('day', normalize-space(Date))[1])]">
          <xsl:call-template name="day-table">
            <xsl:with-param name="day" select="key('day', normalize-space(Date))"/>
          </xsl:call-template>
        </xsl:for-each>
      </body>
    </html>
  </xsl:template>

  <!-- One day's entries, then its totals per customer. -->
  <xsl:template name="day-table">
    <xsl:param name="day"/>
    <xsl:variable name="rows">
      <xsl:for-each select="$day">
        <row customer="{normalize-space(Customer)}">
          <xsl:call-template name="minutes"><xsl:with-param name="text" select="normalize-space(Duration)"/></xsl:call-template>
        </row>
      </xsl:for-each>
    </xsl:variable>
    <xsl:variable name="minutes" select="exsl:node-set($rows)/row"/>
    <table width="660" cellpadding="0" cellspacing="0" border="0" style="{$page-style}margin-bottom:18px;">
      <tr>
        <td colspan="6" style="padding:6px 0;font-size:15px;font-weight:bold;color:{$accent};">
          <xsl:call-template name="date"><xsl:with-param name="value" select="$day[1]/Date"/></xsl:call-template>
        </td>
      </tr>
      <tr>
        <td style="{$head-cell-style}">Customer:Job</td>
        <td style="{$head-cell-style}">Service item</td>
        <td style="{$head-cell-style}">Payroll item</td>
        <td style="{$head-cell-style}{$num-style}">Hours</td>
        <td style="{$head-cell-style}">Billable</td>
        <td style="{$head-cell-style}">Notes</td>
      </tr>
      <xsl:for-each select="$day">
        <xsl:variable name="n" select="position()"/>
        <tr>
          <td style="{$cell-style}"><xsl:value-of select="Customer"/></td>
          <td style="{$cell-style}"><xsl:value-of select="Project"/></td>
          <td style="{$cell-style}"><xsl:value-of select="PayrollItem"/></td>
          <td style="{$cell-style}{$num-style}"><xsl:call-template name="hours"><xsl:with-param name="minutes" select="$minutes[$n]"/></xsl:call-template></td>
          <td style="{$cell-style}">
            <xsl:if test="contains('|true|yes|1|', concat('|', translate(normalize-space(Billable), 'TRUEYS', 'trueys'), '|'))">yes</xsl:if>
          </td>
          <td style="{$cell-style}"><xsl:call-template name="lines"><xsl:with-param name="text" select="Notes"/></xsl:call-template></td>
        </tr>
      </xsl:for-each>
      <xsl:for-each select="$minutes[not(@customer = preceding-sibling::row/@customer)]">
        <xsl:variable name="customer" select="@customer"/>
        <tr>
          <td colspan="3" style="padding:4px 8px;text-align:right;color:{$muted};">
            <xsl:text>Total </xsl:text>
            <xsl:choose>
              <xsl:when test="$customer != ''"><xsl:value-of select="$customer"/></xsl:when>
              <xsl:otherwise>without customer</xsl:otherwise>
            </xsl:choose>
          </td>
          <td style="padding:4px 8px;{$num-style}"><xsl:call-template name="hours"><xsl:with-param name="minutes" select="sum($minutes[@customer = $customer])"/></xsl:call-template></td>
          <td colspan="2"/>
        </tr>
      </xsl:for-each>
      <tr>
        <td colspan="3" style="padding:4px 8px;text-align:right;font-weight:bold;">Day total</td>
        <td style="padding:4px 8px;font-weight:bold;{$num-style}"><xsl:call-template name="hours"><xsl:with-param name="minutes" select="sum($minutes)"/></xsl:call-template></td>
        <td colspan="2"/>
      </tr>
    </table>
  </xsl:template>

  <!-- A duration ("PT2H30M", "PT45M", "2:30") in whole minutes; 0 for anything else. -->
  <xsl:template name="minutes">
    <xsl:param name="text"/>
    <xsl:variable name="t" select="substring-after($text, 'PT')"/>
    <xsl:variable name="h">
      <xsl:choose>
        <xsl:when test="contains($text, ':')"><xsl:value-of select="substring-before($text, ':')"/></xsl:when>
        <xsl:when test="contains($t, 'H')"><xsl:value-of select="substring-before($t, 'H')"/></xsl:when>
        <xsl:otherwise>0</xsl:otherwise>
      </xsl:choose>
    </xsl:variable>
    <xsl:variable name="rest">
      <xsl:choose>
        <xsl:when test="contains($t, 'H')"><xsl:value-of select="substring-after($t, 'H')"/></xsl:when>
        <xsl:otherwise><xsl:value-of select="$t"/></xsl:otherwise>
      </xsl:choose>
    </xsl:variable>
    <xsl:variable name="m">
      <xsl:choose>
        <xsl:when test="contains($text, ':')"><xsl:value-of select="substring-after($text, ':')"/></xsl:when>
        <xsl:when test="contains($rest, 'M')"><xsl:value-of select="substring-before($rest, 'M')"/></xsl:when>
        <xsl:otherwise>0</xsl:otherwise>
      </xsl:choose>
    </xsl:variable>
    <xsl:variable name="total" select="number($h) * 60 + number($m)"/>
    <xsl:choose>
      <xsl:when test="(starts-with($text, 'PT') or contains($text, ':')) and $total = $total"><xsl:value-of select="floor($total)"/></xsl:when>
      <xsl:otherwise>0</xsl:otherwise>
    </xsl:choose>
  </xsl:template>

  <!-- Minutes as hours and minutes: 150 as "2:30". -->
  <xsl:template name="hours">
    <xsl:param name="minutes"/>
    <xsl:variable name="m" select="round(number($minutes))"/>
    <xsl:value-of select="concat(floor($m div 60), ':', format-number($m mod 60, '00'))"/>
  </xsl:template>

</xsl:stylesheet>
