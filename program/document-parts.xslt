<?xml version="1.0" encoding="UTF-8"?>
<!--
  Dorvane: the parts every mailed document is built from.

  Imported (xsl:import) by invoice.xslt, salesreceipt.xslt, estimate.xslt, creditmemo.xslt,
  PurchaseOrder.xslt, statement.xslt, timesheet.xslt and company.xslt; a sheet that imports
  it may override any template or variable here with one of the same name.

  Everything is laid out with tables and inline styles, because mail clients throw away
  style blocks and scripts; the page is 660 pixels wide. The HTML is a fragment: the
  program puts the company header above it and wraps it in a message or a preview page.

  The data is QuickBooks' qbXML: amounts carry two decimals ("150.00"), dates are
  YYYY-MM-DD, quantities and prices carry up to five decimals.
-->
<xsl:stylesheet version="1.0"
    xmlns:xsl="http://www.w3.org/1999/XSL/Transform"
    xmlns:exsl="http://exslt.org/common"
    exclude-result-prefixes="exsl">

  <!-- ===== Look ===== -->

  <xsl:variable name="accent">#2b4c7e</xsl:variable>
  <xsl:variable name="rule">#d9dee5</xsl:variable>
  <xsl:variable name="muted">#6b7280</xsl:variable>
  <xsl:variable name="shade">#f3f5f8</xsl:variable>

  <xsl:variable name="page-style">width:660px;border-collapse:collapse;font-family:Arial,Helvetica,sans-serif;font-size:13px;line-height:1.4;color:#222222;</xsl:variable>
  <xsl:variable name="inner-style">width:100%;border-collapse:collapse;font-family:Arial,Helvetica,sans-serif;font-size:13px;line-height:1.4;color:#222222;</xsl:variable>
  <xsl:variable name="title-style" select="concat('font-size:26px;font-weight:bold;letter-spacing:2px;color:', $accent, ';')"/>
  <xsl:variable name="label-style" select="concat('font-size:11px;font-weight:bold;text-transform:uppercase;letter-spacing:1px;color:', $muted, ';')"/>
  <xsl:variable name="head-cell-style" select="concat('padding:6px 8px;font-size:11px;font-weight:bold;text-transform:uppercase;letter-spacing:1px;color:#ffffff;background-color:', $accent, ';')"/>
  <xsl:variable name="cell-style" select="concat('padding:6px 8px;vertical-align:top;border-bottom:1px solid ', $rule, ';')"/>
  <xsl:variable name="num-style">text-align:right;white-space:nowrap;</xsl:variable>

  <!-- ===== Values ===== -->

  <!-- An amount as money: 1,234.50, -20.00. Empty text stays empty; text that is no number is shown as it is. -->
  <xsl:template name="money">
    <xsl:param name="value"/>
    <xsl:variable name="n" select="number($value)"/>
    <xsl:choose>
      <xsl:when test="normalize-space($value) = ''"/>
      <xsl:when test="$n != $n"><xsl:value-of select="$value"/></xsl:when>
      <!-- rounds first, so that -0.001 is shown as 0.00 and not as -0.00 -->
      <xsl:when test="round($n * 100) = 0">0.00</xsl:when>
      <xsl:otherwise><xsl:value-of select="format-number(round($n * 100) div 100, '#,##0.00')"/></xsl:otherwise>
    </xsl:choose>
  </xsl:template>

  <!-- A quantity or a price: as many decimals as it has, up to five, but at least `min-decimals`. -->
  <xsl:template name="quantity">
    <xsl:param name="value"/>
    <xsl:param name="min-decimals" select="0"/>
    <xsl:variable name="n" select="number($value)"/>
    <xsl:choose>
      <xsl:when test="normalize-space($value) = ''"/>
      <xsl:when test="$n != $n"><xsl:value-of select="$value"/></xsl:when>
      <xsl:when test="$min-decimals = 2"><xsl:value-of select="format-number($n, '#,##0.00###')"/></xsl:when>
      <xsl:otherwise><xsl:value-of select="format-number($n, '#,##0.#####')"/></xsl:otherwise>
    </xsl:choose>
  </xsl:template>

  <!-- The number in a decimal text that may use an exponent ("1234.5", "-20", "1.0E-2"), as
       a plain decimal text that number() understands; XPath 1.0 itself reads no exponents. -->
  <xsl:template name="plain-number">
    <xsl:param name="text"/>
    <xsl:variable name="t" select="translate(normalize-space($text), 'e', 'E')"/>
    <xsl:choose>
      <xsl:when test="contains($t, 'E')">
        <xsl:call-template name="scale-by-ten">
          <xsl:with-param name="value" select="number(substring-before($t, 'E'))"/>
          <xsl:with-param name="exponent" select="number(translate(substring-after($t, 'E'), '+', ''))"/>
        </xsl:call-template>
      </xsl:when>
      <xsl:otherwise><xsl:value-of select="number($t)"/></xsl:otherwise>
    </xsl:choose>
  </xsl:template>

  <xsl:template name="scale-by-ten">
    <xsl:param name="value"/>
    <xsl:param name="exponent"/>
    <xsl:choose>
      <xsl:when test="$exponent != $exponent or $value != $value">NaN</xsl:when>
      <xsl:when test="$exponent &gt; 0 and $exponent &lt; 400">
        <xsl:call-template name="scale-by-ten">
          <xsl:with-param name="value" select="$value * 10"/>
          <xsl:with-param name="exponent" select="$exponent - 1"/>
        </xsl:call-template>
      </xsl:when>
      <xsl:when test="$exponent &lt; 0 and $exponent &gt; -400">
        <xsl:call-template name="scale-by-ten">
          <xsl:with-param name="value" select="$value div 10"/>
          <xsl:with-param name="exponent" select="$exponent + 1"/>
        </xsl:call-template>
      </xsl:when>
      <xsl:when test="$exponent = 0"><xsl:value-of select="$value"/></xsl:when>
      <xsl:otherwise>NaN</xsl:otherwise>
    </xsl:choose>
  </xsl:template>

  <!-- A qbXML date (2026-11-02) as "Nov 2, 2026"; any other text is shown as it is. -->
  <xsl:template name="date">
    <xsl:param name="value"/>
    <xsl:variable name="d" select="normalize-space($value)"/>
    <xsl:variable name="month" select="number(substring($d, 6, 2))"/>
    <xsl:choose>
      <xsl:when test="string-length($d) = 10 and substring($d, 5, 1) = '-' and substring($d, 8, 1) = '-'
                      and $month &gt;= 1 and $month &lt;= 12 and number(substring($d, 9, 2)) = number(substring($d, 9, 2))
                      and number(substring($d, 1, 4)) = number(substring($d, 1, 4))">
        <xsl:value-of select="substring('JanFebMarAprMayJunJulAugSepOctNovDec', $month * 3 - 2, 3)"/>
        <xsl:text> </xsl:text>
        <xsl:value-of select="number(substring($d, 9, 2))"/>
        <xsl:text>, </xsl:text>
        <xsl:value-of select="substring($d, 1, 4)"/>
      </xsl:when>
      <xsl:otherwise><xsl:value-of select="$value"/></xsl:otherwise>
    </xsl:choose>
  </xsl:template>

  <!-- Text with its line breaks kept (descriptions and messages are typed on several lines). -->
  <xsl:template name="lines">
    <xsl:param name="text"/>
    <xsl:variable name="t" select="translate($text, '&#13;', '')"/>
    <xsl:choose>
      <xsl:when test="contains($t, '&#10;')">
        <xsl:value-of select="substring-before($t, '&#10;')"/>
        <br/>
        <xsl:call-template name="lines">
          <xsl:with-param name="text" select="substring-after($t, '&#10;')"/>
        </xsl:call-template>
      </xsl:when>
      <xsl:otherwise><xsl:value-of select="$t"/></xsl:otherwise>
    </xsl:choose>
  </xsl:template>

  <!-- A qbXML address aggregate (Addr1..Addr4, City, State, PostalCode, Country) as lines. -->
  <xsl:template name="address">
    <xsl:param name="address"/>
    <xsl:for-each select="$address/Addr1 | $address/Addr2 | $address/Addr3 | $address/Addr4">
      <xsl:if test="normalize-space(.) != ''">
        <xsl:value-of select="."/><br/>
      </xsl:if>
    </xsl:for-each>
    <xsl:variable name="city" select="normalize-space($address/City)"/>
    <xsl:variable name="state" select="normalize-space(concat($address/State, ' ', $address/PostalCode))"/>
    <xsl:if test="$city != '' or $state != ''">
      <xsl:value-of select="$city"/>
      <xsl:if test="$city != '' and $state != ''">, </xsl:if>
      <xsl:value-of select="$state"/><br/>
    </xsl:if>
    <xsl:if test="normalize-space($address/Country) != ''">
      <xsl:value-of select="$address/Country"/><br/>
    </xsl:if>
  </xsl:template>

  <!-- ===== Document blocks ===== -->

  <!-- The title and the reference box beside it. `fields` is a list of
       <field label="Invoice No." value="1041" kind="date|money|text"/>; empty values are left out. -->
  <xsl:template name="title-block">
    <xsl:param name="title"/>
    <xsl:param name="fields"/>
    <tr>
      <td style="padding:0 0 18px 0;">
        <table width="100%" cellpadding="0" cellspacing="0" border="0" style="{$inner-style}">
          <tr>
            <td valign="top" style="{$title-style}"><xsl:value-of select="$title"/></td>
            <td valign="top" align="right">
              <table cellpadding="0" cellspacing="0" border="0" style="border-collapse:collapse;font-family:Arial,Helvetica,sans-serif;font-size:13px;color:#222222;">
                <xsl:for-each select="exsl:node-set($fields)/field[normalize-space(@value) != '']">
                  <tr>
                    <td align="right" style="padding:2px 12px 2px 0;{$label-style}"><xsl:value-of select="@label"/></td>
                    <td align="right" style="padding:2px 0;white-space:nowrap;font-weight:bold;">
                      <xsl:call-template name="field-value"/>
                    </td>
                  </tr>
                </xsl:for-each>
              </table>
            </td>
          </tr>
        </table>
      </td>
    </tr>
  </xsl:template>

  <xsl:template name="field-value">
    <xsl:choose>
      <xsl:when test="@kind = 'date'">
        <xsl:call-template name="date"><xsl:with-param name="value" select="@value"/></xsl:call-template>
      </xsl:when>
      <xsl:when test="@kind = 'money'">
        <xsl:call-template name="money"><xsl:with-param name="value" select="@value"/></xsl:call-template>
      </xsl:when>
      <xsl:otherwise><xsl:value-of select="@value"/></xsl:otherwise>
    </xsl:choose>
  </xsl:template>

  <!-- The parties side by side: `first` and `second` are address aggregates (either may be
       missing, and the block of a missing one is left out); `first-name` stands in for the
       first address when it has no lines. -->
  <xsl:template name="parties-block">
    <xsl:param name="first-label"/>
    <xsl:param name="first" select="/.."/>
    <xsl:param name="first-name"/>
    <xsl:param name="second-label"/>
    <xsl:param name="second" select="/.."/>
    <xsl:variable name="has-first" select="count($first/*[normalize-space(.) != '']) &gt; 0"/>
    <xsl:variable name="has-second" select="count($second/*[normalize-space(.) != '']) &gt; 0"/>
    <xsl:if test="$has-first or normalize-space($first-name) != '' or $has-second">
      <tr>
        <td style="padding:0 0 18px 0;">
          <table width="100%" cellpadding="0" cellspacing="0" border="0" style="{$inner-style}">
            <tr>
              <xsl:if test="$has-first or normalize-space($first-name) != ''">
                <td width="50%" valign="top" style="padding:0 16px 0 0;">
                  <div style="{$label-style}padding-bottom:4px;"><xsl:value-of select="$first-label"/></div>
                  <div>
                    <xsl:choose>
                      <xsl:when test="$has-first">
                        <xsl:call-template name="address"><xsl:with-param name="address" select="$first"/></xsl:call-template>
                      </xsl:when>
                      <xsl:otherwise><xsl:value-of select="$first-name"/><br/></xsl:otherwise>
                    </xsl:choose>
                  </div>
                </td>
              </xsl:if>
              <xsl:if test="$has-second">
                <td width="50%" valign="top" style="padding:0 0 0 16px;">
                  <div style="{$label-style}padding-bottom:4px;"><xsl:value-of select="$second-label"/></div>
                  <div><xsl:call-template name="address"><xsl:with-param name="address" select="$second"/></xsl:call-template></div>
                </td>
              </xsl:if>
            </tr>
          </table>
        </td>
      </tr>
    </xsl:if>
  </xsl:template>

  <!-- A strip of labelled facts (P.O. number, terms, ship date, ...), only those that have a
       value; nothing at all when none has. `fields` as for the title block. -->
  <xsl:template name="info-strip">
    <xsl:param name="fields"/>
    <xsl:variable name="present" select="exsl:node-set($fields)/field[normalize-space(@value) != '']"/>
    <xsl:if test="$present">
      <tr>
        <td style="padding:0 0 18px 0;">
          <table width="100%" cellpadding="0" cellspacing="0" border="0" style="{$inner-style}border:1px solid {$rule};">
            <tr bgcolor="{$shade}">
              <xsl:for-each select="$present">
                <td style="padding:5px 8px 1px 8px;background-color:{$shade};{$label-style}"><xsl:value-of select="@label"/></td>
              </xsl:for-each>
            </tr>
            <tr>
              <xsl:for-each select="$present">
                <td valign="top" style="padding:2px 8px 6px 8px;"><xsl:call-template name="field-value"/></td>
              </xsl:for-each>
            </tr>
          </table>
        </td>
      </tr>
    </xsl:if>
  </xsl:template>

  <!-- ===== The lines of a transaction ===== -->

  <!-- The table of lines of the context transaction (any of the five kinds). -->
  <xsl:template name="line-table">
    <xsl:param name="rate-label">Rate</xsl:param>
    <tr>
      <td style="padding:0;">
        <table width="100%" cellpadding="0" cellspacing="0" border="0" style="{$inner-style}">
          <tr bgcolor="{$accent}">
            <td width="130" style="{$head-cell-style}">Item</td>
            <td style="{$head-cell-style}">Description</td>
            <td width="60" style="{$head-cell-style}text-align:right;">Qty</td>
            <td width="80" style="{$head-cell-style}text-align:right;"><xsl:value-of select="$rate-label"/></td>
            <td width="90" style="{$head-cell-style}text-align:right;">Amount</td>
          </tr>
          <xsl:apply-templates mode="line"
              select="InvoiceLineRet | InvoiceLineGroupRet
                      | SalesReceiptLineRet | SalesReceiptLineGroupRet
                      | EstimateLineRet | EstimateLineGroupRet
                      | CreditMemoLineRet | CreditMemoLineGroupRet
                      | PurchaseOrderLineRet | PurchaseOrderLineGroupRet"/>
        </table>
      </td>
    </tr>
  </xsl:template>

  <!-- An ordinary line; inside a printed group it is indented. -->
  <xsl:template mode="line"
      match="InvoiceLineRet | SalesReceiptLineRet | EstimateLineRet | CreditMemoLineRet | PurchaseOrderLineRet">
    <xsl:variable name="member" select="contains(local-name(..), 'LineGroupRet')"/>
    <xsl:variable name="item" select="ItemRef/FullName"/>
    <xsl:choose>
      <!-- A subtotal item: no quantity and no rate, only the sum of the lines above it. The
           line does not tell its item's type, so a subtotal item is known by its name or
           description, as QuickBooks calls them. -->
      <xsl:when test="Amount and not(Quantity) and not(Rate) and not(RatePercent)
                      and contains(translate(concat($item, ' ', Desc), 'SUBTOAL', 'subtoal'), 'subtotal')">
        <tr>
          <td style="{$cell-style}"/>
          <td colspan="3" style="{$cell-style}text-align:right;font-weight:bold;">
            <xsl:choose>
              <xsl:when test="normalize-space(Desc) != ''"><xsl:value-of select="Desc"/></xsl:when>
              <xsl:otherwise><xsl:value-of select="$item"/></xsl:otherwise>
            </xsl:choose>
          </td>
          <td style="{$cell-style}{$num-style}font-weight:bold;border-top:1px solid #999999;">
            <xsl:call-template name="money"><xsl:with-param name="value" select="Amount"/></xsl:call-template>
          </td>
        </tr>
      </xsl:when>
      <xsl:otherwise>
        <tr>
          <td style="{$cell-style}">
            <xsl:if test="$member">
              <xsl:attribute name="style"><xsl:value-of select="concat($cell-style, 'padding-left:22px;color:', $muted, ';')"/></xsl:attribute>
            </xsl:if>
            <xsl:value-of select="$item"/>
          </td>
          <td style="{$cell-style}">
            <xsl:if test="$member">
              <xsl:attribute name="style"><xsl:value-of select="concat($cell-style, 'padding-left:22px;')"/></xsl:attribute>
            </xsl:if>
            <xsl:call-template name="lines"><xsl:with-param name="text" select="Desc"/></xsl:call-template>
            <xsl:if test="normalize-space(ServiceDate) != ''">
              <div style="font-size:11px;color:{$muted};">
                <xsl:text>Service date: </xsl:text>
                <xsl:call-template name="date"><xsl:with-param name="value" select="ServiceDate"/></xsl:call-template>
              </div>
            </xsl:if>
          </td>
          <td style="{$cell-style}{$num-style}">
            <xsl:call-template name="quantity"><xsl:with-param name="value" select="Quantity"/></xsl:call-template>
          </td>
          <td style="{$cell-style}{$num-style}">
            <xsl:call-template name="line-rate"/>
          </td>
          <td style="{$cell-style}{$num-style}">
            <xsl:call-template name="money"><xsl:with-param name="value" select="Amount"/></xsl:call-template>
          </td>
        </tr>
      </xsl:otherwise>
    </xsl:choose>
  </xsl:template>

  <xsl:template name="line-rate">
    <xsl:choose>
      <xsl:when test="normalize-space(RatePercent) != ''">
        <xsl:call-template name="quantity"><xsl:with-param name="value" select="RatePercent"/></xsl:call-template>
        <xsl:text>%</xsl:text>
      </xsl:when>
      <xsl:otherwise>
        <xsl:call-template name="quantity">
          <xsl:with-param name="value" select="Rate"/>
          <xsl:with-param name="min-decimals" select="2"/>
        </xsl:call-template>
      </xsl:otherwise>
    </xsl:choose>
  </xsl:template>

  <!-- A group item. When its items are to be printed: the group's own row, its members
       indented below it and a row with the group's total; otherwise one row carrying the
       group's total. -->
  <xsl:template mode="line"
      match="InvoiceLineGroupRet | SalesReceiptLineGroupRet | EstimateLineGroupRet | CreditMemoLineGroupRet | PurchaseOrderLineGroupRet">
    <xsl:variable name="printed" select="normalize-space(IsPrintItemsInGroup) = 'true' or normalize-space(IsPrintItemsInGroup) = '1'"/>
    <tr>
      <td style="{$cell-style}">
        <xsl:if test="$printed">
          <xsl:attribute name="style"><xsl:value-of select="concat($cell-style, 'font-weight:bold;')"/></xsl:attribute>
        </xsl:if>
        <xsl:value-of select="ItemGroupRef/FullName"/>
      </td>
      <td style="{$cell-style}">
        <xsl:call-template name="lines"><xsl:with-param name="text" select="Desc"/></xsl:call-template>
      </td>
      <td style="{$cell-style}{$num-style}">
        <xsl:call-template name="quantity"><xsl:with-param name="value" select="Quantity"/></xsl:call-template>
      </td>
      <td style="{$cell-style}"/>
      <td style="{$cell-style}{$num-style}">
        <xsl:if test="not($printed)">
          <xsl:call-template name="money"><xsl:with-param name="value" select="TotalAmount"/></xsl:call-template>
        </xsl:if>
      </td>
    </tr>
    <xsl:if test="$printed">
      <xsl:apply-templates mode="line"
          select="InvoiceLineRet | SalesReceiptLineRet | EstimateLineRet | CreditMemoLineRet | PurchaseOrderLineRet"/>
      <tr>
        <td style="{$cell-style}"/>
        <td colspan="3" style="{$cell-style}text-align:right;font-style:italic;">
          <xsl:text>Total </xsl:text><xsl:value-of select="ItemGroupRef/FullName"/>
        </td>
        <td style="{$cell-style}{$num-style}font-weight:bold;">
          <xsl:call-template name="money"><xsl:with-param name="value" select="TotalAmount"/></xsl:call-template>
        </td>
      </tr>
    </xsl:if>
  </xsl:template>

  <!-- ===== Totals and notes ===== -->

  <!-- The totals at the foot of the lines, with the message to the customer (or vendor)
       beside them. `rows` is a list of <row label="Subtotal" value="1873.50" strong="yes"/>;
       rows without a value are left out. The transaction's Memo is the company's own note
       and is not printed. -->
  <xsl:template name="totals-block">
    <xsl:param name="rows"/>
    <xsl:param name="message"/>
    <tr>
      <td style="padding:12px 0 0 0;">
        <table width="100%" cellpadding="0" cellspacing="0" border="0" style="{$inner-style}">
          <tr>
            <td valign="top" style="padding:4px 24px 0 0;">
              <xsl:call-template name="lines"><xsl:with-param name="text" select="$message"/></xsl:call-template>
            </td>
            <td width="270" valign="top" style="padding:0;">
              <table width="100%" cellpadding="0" cellspacing="0" border="0" style="{$inner-style}">
                <xsl:for-each select="exsl:node-set($rows)/row[normalize-space(@value) != '']">
                  <xsl:choose>
                    <xsl:when test="@strong = 'yes'">
                      <tr bgcolor="{$shade}">
                        <td style="padding:7px 8px;background-color:{$shade};font-weight:bold;border-top:2px solid {$accent};"><xsl:value-of select="@label"/></td>
                        <td style="padding:7px 8px;background-color:{$shade};font-weight:bold;font-size:15px;border-top:2px solid {$accent};{$num-style}">
                          <xsl:call-template name="money"><xsl:with-param name="value" select="@value"/></xsl:call-template>
                        </td>
                      </tr>
                    </xsl:when>
                    <xsl:otherwise>
                      <tr>
                        <td style="padding:4px 8px;"><xsl:value-of select="@label"/></td>
                        <td style="padding:4px 8px;{$num-style}">
                          <xsl:call-template name="money"><xsl:with-param name="value" select="@value"/></xsl:call-template>
                        </td>
                      </tr>
                    </xsl:otherwise>
                  </xsl:choose>
                </xsl:for-each>
              </table>
            </td>
          </tr>
        </table>
      </td>
    </tr>
  </xsl:template>

  <!-- "Sales Tax (San Tomas 7.75%)": the label of the tax row. -->
  <xsl:template name="tax-label">
    <xsl:text>Sales Tax</xsl:text>
    <xsl:if test="normalize-space(SalesTaxPercentage) != ''">
      <xsl:text> (</xsl:text>
      <xsl:call-template name="quantity"><xsl:with-param name="value" select="SalesTaxPercentage"/></xsl:call-template>
      <xsl:text>%)</xsl:text>
    </xsl:if>
  </xsl:template>

  <!-- Subtotal + SalesTaxTotal, for the transactions that carry no TotalAmount. -->
  <xsl:template name="sum-total">
    <xsl:variable name="tax">
      <xsl:choose>
        <xsl:when test="number(SalesTaxTotal) = number(SalesTaxTotal)"><xsl:value-of select="number(SalesTaxTotal)"/></xsl:when>
        <xsl:otherwise>0</xsl:otherwise>
      </xsl:choose>
    </xsl:variable>
    <xsl:if test="normalize-space(Subtotal) != ''">
      <xsl:value-of select="number(Subtotal) + $tax"/>
    </xsl:if>
  </xsl:template>

  <!-- The transaction's total: TotalAmount where QuickBooks gives one, otherwise Subtotal + tax. -->
  <xsl:template name="total">
    <xsl:choose>
      <xsl:when test="normalize-space(TotalAmount) != ''"><xsl:value-of select="TotalAmount"/></xsl:when>
      <xsl:otherwise><xsl:call-template name="sum-total"/></xsl:otherwise>
    </xsl:choose>
  </xsl:template>

  <!-- No stray text when a node without a template of its own is reached. -->
  <xsl:template match="text()" mode="line"/>

</xsl:stylesheet>
